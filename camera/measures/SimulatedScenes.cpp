#include "camera/measures/SimulatedScenes.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace velmo::camera {
namespace {

using Values = cv::Mat_<float>;

constexpr float fLevel = 8000;

/// A wall with the shading of a lens.
Values wall(cv::Size size)
{
    Values scene(size);
    const float width = static_cast<float>(size.width), height = static_cast<float>(size.height);
    for (int r = 0; r < size.height; ++r)
        for (int c = 0; c < size.width; ++c) {
            const float x = static_cast<float>(c), y = static_cast<float>(r);
            scene(r, c) = fLevel + (20 * x + 10 * std::hypot(x - width / 2, y - height / 2)) / width;
        }
    return scene;
}

/// Random detail of deviation 1 in octaves: each is `growth` times as high as the one of half its size.
Values texture(cv::Size size, double growth, cv::RNG& random)
{
    Values sum(size, 0.0F);
    double height = 1;
    for (int side = 1; side <= 64; side *= 2, height *= growth) {
        Values coarse(size.height / side + 3, size.width / side + 3), large;
        random.fill(coarse, cv::RNG::NORMAL, 0, height);
        cv::resize(coarse, large, coarse.size() * side, 0, 0, cv::INTER_CUBIC);
        sum += large(cv::Rect({side, side}, size));
    }
    cv::Scalar mean, deviation;
    cv::meanStdDev(sum, mean, deviation);
    return (sum - mean[0]) / deviation[0];
}

Values boxes(cv::Size size, cv::RNG& random)
{
    Values scene = wall(size);
    for (int k = 0; k < 14; ++k) {
        const float height = (k % 2 == 0 ? -8.0F : 8.0F) * static_cast<float>(1 << k % 6);
        const cv::Rect box(random.uniform(0, size.width), random.uniform(0, size.height),
                           random.uniform(6, 46), random.uniform(6, 46));
        scene(box & cv::Rect({}, size)) += height;
    }
    return scene;
}

/// Ellipses of 15 to 300 counts with soft edges, each at its own speed.
Values withObjects(Values scene, int time)
{
    const float heights[] = {15, 30, 60, 150, 300};
    for (int k = 0; k < 5; ++k) {
        const float speed = 0.5F + 0.5F * static_cast<float>(k);
        const float x = std::fmod(20.0F * static_cast<float>(k) + static_cast<float>(time) * speed,
                                  static_cast<float>(scene.cols));
        const float y = static_cast<float>(scene.rows) * (0.1F + 0.2F * static_cast<float>(k));
        for (int r = 0; r < scene.rows; ++r)
            for (int c = 0; c < scene.cols; ++c) {
                const float away =
                    std::hypot((static_cast<float>(c) - x) / 5, (static_cast<float>(r) - y) / 4);
                scene(r, c) += heights[k] * std::clamp((1.1F - away) * 5, 0.0F, 1.0F);
            }
    }
    return scene;
}

/// What is seen of a larger picture from a place between its pixels.
Values viewOf(const Values& world, cv::Size size, double x, double y)
{
    const cv::Matx23d from(1, 0, x, 0, 1, y);
    Values view;
    cv::warpAffine(world, view, from, size, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_REFLECT);
    return view;
}

SimulatedScene pan(std::string name, const Values& world, cv::Size size, double speed)
{
    // To and fro, so that the picture does not come to its end.
    const double reach = std::max(1.0, static_cast<double>(world.cols - size.width - 1));
    return {std::move(name), false, [=](int time) {
                const double way = std::fmod(speed * time, 2 * reach);
                const double x = way < reach ? way : 2 * reach - way;
                return viewOf(world, size, x,
                              std::min(0.5 * x, static_cast<double>(world.rows - size.height - 1)));
            }};
}

SimulatedScene still(std::string name, const Values& scene)
{
    return {std::move(name), false, [=](int) { return scene.clone(); }};
}

} // namespace

std::vector<SimulatedScene> simulatedScenes(cv::Size size, unsigned seed)
{
    cv::RNG random(seed);
    const Values flat = wall(size), coarse = texture(size, 1.52, random), fine = texture(size, 1.11, random);
    const cv::Size large(2 * size.width, 2 * size.height);
    const Values smoothWorld = fLevel + 40 * texture(large, 2.8, random),
                 world = fLevel + 25 * texture(large, 1.6, random),
                 fineWorld = fLevel + 25 * texture(large, 1.23, random);
    return {{"flat", true, [=](int) { return flat.clone(); }},
            {"jumps", true, [=](int time) { return Values(flat + (time / 10 % 2 * 150 + 0.7 * time)); }},
            still("boxes", boxes(size, random)),
            still("texture", wall(size) + 12 * coarse),
            still("fine texture", wall(size) + 25 * fine),
            {"objects", false, [=](int time) { return withObjects(flat.clone(), time); }},
            pan("slow pan", world, size, 0.4),
            pan("pan", world, size, 1),
            pan("smooth pan", smoothWorld, size, 1.5),
            pan("fine pan", fineWorld, size, 2),
            {"shaking", false, [=](int time) {
                 cv::RNG place(static_cast<std::uint64_t>(seed) * 1000 + static_cast<std::uint64_t>(time));
                 place.next(); // its first number hardly depends on the seed
                 const double x = 60 + place.gaussian(0.7), y = 60 + place.gaussian(0.7);
                 return viewOf(world, size, x, y);
             }}};
}

std::vector<SimulatedScene> scenesOf(const Values& picture, cv::Size size)
{
    Values half;
    cv::resize(picture, half, {picture.cols / 2, picture.rows / 2}, 0, 0, cv::INTER_AREA);
    const cv::Point corner((picture.cols - size.width) / 2, (picture.rows - size.height) / 2);
    std::vector<SimulatedScene> scenes{still("picture", picture(cv::Rect(corner, size)).clone())};
    if (half.cols > size.width && half.rows > size.height)
        scenes.push_back(pan("pan over it", half, size, 1));
    return scenes;
}

} // namespace velmo::camera

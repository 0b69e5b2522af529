#include "bench/Bench.h"
#include "bench/Scene.h"
#include "camera/Settings.h"
#include "camera/colours/Colouring.h"
#include "camera/stages/Chain.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace velmo::camera;

namespace {

Settings with(const std::vector<std::pair<std::string, std::string>>& values)
{
    Settings settings;
    for (const auto& [path, value] : values)
        settings.set(path, value, path);
    return settings;
}

/// A range that glides and colours of one tone.
struct Painter
{
    explicit Painter(const Settings& settings) : range(settings), colouring(settings, Thermometer()) {}

    void paint(const Frame& frame) { colouring.paint(frame, range.of(frame), picture); }

    RangeRule range;
    Colouring colouring;
    Picture picture;
};

struct Stream
{
    Stream(cv::Size size, const Settings& settings)
        : toned(settings), linear(Settings()), chain(with({{"noise/denoise", "normal"}}))
    {
        cv::RNG random(5);
        for (Frame& frame : frames) {
            cv::Mat_<float> noise(size), values;
            random.fill(noise, cv::RNG::NORMAL, 0, 4);
            scene(size).convertTo(values, CV_32F);
            cv::Mat(values + noise).convertTo(frame, CV_16U);
        }
    }

    const Frame& next() { return frames[number++ % frames.size()]; }

    std::array<Frame, 4> frames;
    std::size_t number = 0;
    Painter toned, linear;
    Chain chain;
    Frame clean;
};

/// Range and colours of a frame with a tone, beside those without, and beside the chain in front of them.
Job tone(cv::Size size, const Settings& settings, double bar)
{
    const auto stream = std::make_shared<Stream>(size, settings);
    Job job(5 * static_cast<std::size_t>(size.area()), static_cast<std::size_t>(size.area()));
    job.ours([=] { stream->toned.paint(stream->next()); });
    job.peer("linear", [=] { stream->linear.paint(stream->next()); });
    job.peer("denoise", [=] {
        stream->next().copyTo(stream->clean);
        stream->chain.apply(stream->clean);
    });
    if (size.width == 640)
        job.atMost(bar, "denoise");
    return job;
}

const Registration plateau("tone plateau", [](cv::Size size) {
    return tone(size, with({{"colours/tone", "plateau"}}), 1);
});
const Registration local("tone local", [](cv::Size size) {
    return tone(size, with({{"colours/tone", "local"}}), 8);
});
const Registration detail("detail", [](cv::Size size) {
    return tone(size, with({{"colours/detail", "4"}}), 2);
});

} // namespace

#include "apps/thermal/Simulator.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>

namespace thermal {

using velmo::camera::Frame;

namespace {

using Scene = cv::Mat_<float>;

constexpr float kelvinHundredths(double celsius)
{
    return static_cast<float>((celsius + 273.15) * 100);
}

/// How much of a pixel a shape covers whose edge is `inside` pixels away.
double coverage(double inside)
{
    return std::clamp(0.5 + inside / 1.4, 0.0, 1.0);
}

void blend(float& pixel, double celsius, double share)
{
    pixel += static_cast<float>(share) * (kelvinHundredths(celsius) - pixel);
}

void drawBox(Scene& scene, const cv::Rect2d& box, double celsius)
{
    for (int r = 0; r < scene.rows; ++r)
        for (int c = 0; c < scene.cols; ++c) {
            const double inside =
                std::min({c - box.x, box.x + box.width - c, r - box.y, box.y + box.height - r});
            blend(scene(r, c), celsius, coverage(inside));
        }
}

/// An ellipse; `tilt` in radians.
void drawEllipse(Scene& scene, cv::Point2d centre, cv::Size2d radii, double tilt, double celsius)
{
    const double reach = std::max(radii.width, radii.height) + 2;
    const int top = std::max(0, static_cast<int>(centre.y - reach));
    const int bottom = std::min(scene.rows, static_cast<int>(centre.y + reach) + 1);
    const int left = std::max(0, static_cast<int>(centre.x - reach));
    const int right = std::min(scene.cols, static_cast<int>(centre.x + reach) + 1);
    for (int r = top; r < bottom; ++r)
        for (int c = left; c < right; ++c) {
            const double x = (c - centre.x) * std::cos(tilt) + (r - centre.y) * std::sin(tilt);
            const double y = (r - centre.y) * std::cos(tilt) - (c - centre.x) * std::sin(tilt);
            const double distance = std::hypot(x / radii.width, y / radii.height);
            blend(scene(r, c), celsius, coverage((1 - distance) * std::min(radii.width, radii.height)));
        }
}

void drawLimb(Scene& scene, cv::Point2d from, cv::Point2d to, double radius, double celsius)
{
    const cv::Point2d along = to - from;
    drawEllipse(scene, (from + to) / 2, {std::hypot(along.x, along.y) / 2 + radius, radius},
                std::atan2(along.y, along.x), celsius);
}

Scene emptyRoom()
{
    Scene room(Simulator::s32Height, Simulator::s32Width);
    for (int r = 0; r < room.rows; ++r)
        for (int c = 0; c < room.cols; ++c) // warm air gathers below the ceiling
            room(r, c) = kelvinHundredths(21.2 - 0.004 * r + 0.0015 * c);
    drawBox(room, {-5, 138, 260, 60}, 19.9);  // floor
    drawBox(room, {-5, 135, 260, 3.5}, 20.4); // skirting
    drawBox(room, {14, 34, 44, 102}, 21.7);   // door
    drawBox(room, {18, 38, 36, 94}, 21.4);
    drawBox(room, {52, 86, 4, 3}, 20.7);    // its handle
    drawBox(room, {146, 22, 76, 58}, 20.2); // window
    drawBox(room, {150, 26, 32, 50}, 18.6);
    drawBox(room, {186, 26, 32, 50}, 18.4);
    for (int rib = 0; rib < 11; ++rib) // radiator
        drawBox(room, {150.0 + 6.5 * rib, 94, 4.6, 34}, 24.6 - 0.05 * rib);
    drawBox(room, {148, 91, 74, 3}, 24.2);
    drawBox(room, {84, 44, 40, 30}, 20.6); // a picture of small squares
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            drawBox(room, {87.5 + 9 * column, 47.5 + 8.5 * row, 5, 5}, 21.3);
    drawBox(room, {97, 113, 34, 3}, 20.9); // table
    drawBox(room, {99, 116, 2.5, 30}, 20.7);
    drawBox(room, {126, 116, 2.5, 30}, 20.7);
    drawBox(room, {112, 105, 6, 8}, 25.5);        // a cup of tea
    drawEllipse(room, {72, 16}, {8, 6}, 0, 23.5); // the lamp's shade
    drawEllipse(room, {72, 17}, {2.6, 2.6}, 0, 400);
    return room;
}

void drawPerson(Scene& scene, double x, double step)
{
    const double swing = std::sin(step);
    drawLimb(scene, {x, 112}, {x + 9 * swing, 150}, 4.2, 22.9);
    drawLimb(scene, {x, 112}, {x - 9 * swing, 150}, 4.2, 22.8);
    drawEllipse(scene, {x, 92}, {9.5, 23}, 0, 23.4);
    drawLimb(scene, {x, 77}, {x - 9 * swing, 105}, 3, 23.8);
    drawLimb(scene, {x, 77}, {x + 9 * swing, 105}, 3, 23.8);
    drawEllipse(scene, {x, 61}, {6, 8}, 0, 25.4);
}

void drawCat(Scene& scene, double x, double step)
{
    for (int leg = 0; leg < 4; ++leg)
        drawLimb(scene, {x - 9 + 6 * leg, 162}, {x - 9 + 6 * leg + 3 * std::sin(step + 2 * leg), 172}, 1.6,
                 22.6);
    drawEllipse(scene, {x, 159}, {13, 5.5}, 0, 23.2);
    drawEllipse(scene, {x - 14, 154}, {4.6, 4.2}, 0, 24.3);
    drawLimb(scene, {x + 12, 157}, {x + 21, 148 + 2 * std::sin(step / 2)}, 1.4, 22.0);
}

} // namespace

Simulator::Simulator(std::size_t frames) : m_nFrames(frames), m_oRandom(1), m_oRoom(emptyRoom())
{
    m_oOffsets.create(m_oRoom.size());
    for (int c = 0; c < m_oOffsets.cols; ++c)
        m_oOffsets.col(c) = static_cast<float>(dStripeDeviation * normal());
    for (float& offset : m_oOffsets)
        offset += static_cast<float>(dPixelDeviation * normal());
    for (int i = 0; i < 7; ++i) {
        const auto y =
            static_cast<int>(m_oRandom() % s32Height); // one after the other: every machine's order
        m_vecDead.emplace_back(static_cast<int>(m_oRandom() % s32Width), y);
    }
}

double Simulator::normal()
{
    // The sum of twelve even numbers: unlike the standard library's, the same on every machine.
    double sum = 0;
    for (int i = 0; i < 6; ++i) {
        const auto bits = static_cast<unsigned>(m_oRandom());
        sum += (bits & 0xFFFF) + (bits >> 16);
    }
    return sum / 65536 - 6;
}

cv::Mat_<float> Simulator::scene(std::size_t index) const
{
    const double time = static_cast<double>(index);
    Scene scene = m_oRoom.clone();
    drawPerson(scene, 130 + 45 * std::sin(time / 16), time / 2.2);
    drawCat(scene, 260 - std::fmod(2.1 * time + 60, 300), time / 1.3);
    return scene;
}

bool Simulator::next(Frame& frame)
{
    if (m_nNext == m_nFrames)
        return false;
    frame = expose(scene(m_nNext++));
    return true;
}

Frame Simulator::shutter()
{
    return expose(Scene(s32Height, s32Width, static_cast<float>(kelvinHundredths(21))));
}

Frame Simulator::expose(const Scene& ideal)
{
    Frame frame(ideal.size());
    for (int r = 0; r < ideal.rows; ++r)
        for (int c = 0; c < ideal.cols; ++c)
            frame(r, c) = cv::saturate_cast<unsigned short>(ideal(r, c) + m_oOffsets(r, c) +
                                                            static_cast<float>(dNoiseDeviation * normal()));
    for (const cv::Point& pixel : m_vecDead)
        frame(pixel) = static_cast<unsigned short>(m_oRandom() % 20);
    return frame;
}

} // namespace thermal

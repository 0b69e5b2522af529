#pragma once

#include "recordings/Frames.h"

#include <cstddef>
#include <random>

namespace thermal {

/// The camera of the demo: a room with a cold window, a radiator and a lamp that saturates; a person walks
/// by, a cat crosses the floor. In hundredths of a kelvin, with what an uncorrected sensor adds: a step per
/// column, an offset per pixel, noise in time, a few dead pixels. The same frames every time.
class Simulator : public velmo::recordings::FrameSource
{
public:
    static constexpr int s32Width = 240;
    static constexpr int s32Height = 180;
    static constexpr double dStripeDeviation = 16; ///< hundredths of a kelvin, of the columns
    static constexpr double dPixelDeviation = 6;   ///< of the pixels' offsets
    static constexpr double dNoiseDeviation = 7;   ///< in time

    explicit Simulator(std::size_t frames);

    bool next(velmo::camera::Frame& frame) override;
    std::optional<std::size_t> count() const override { return m_nFrames; }
    std::string name() const override { return "simulated camera"; }

    /// A frame of the closed shutter, 21 degrees Celsius all over: what bad pixels are found in.
    velmo::camera::Frame shutter();

    /// What a perfect camera would have delivered as frame `index`.
    cv::Mat_<float> scene(std::size_t index) const;

    /// Where the dead pixels are.
    const std::vector<cv::Point>& deadPixels() const { return m_vecDead; }

private:
    double normal();
    velmo::camera::Frame expose(const cv::Mat_<float>& ideal);

    std::size_t m_nFrames;
    std::size_t m_nNext = 0;
    std::mt19937 m_oRandom;
    cv::Mat_<float> m_oRoom;
    cv::Mat_<float> m_oOffsets; ///< columns and pixels together
    std::vector<cv::Point> m_vecDead;
};

} // namespace thermal

#pragma once

#include <opencv2/core.hpp>

#include <limits>
#include <string>

namespace velmo::recordings {

/// The lowest and the highest temperature of a recording of degrees Celsius.
struct DegreeRange
{
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
};

/// The range widened by an image of CV_32FC1. Minus infinity is what is colder than can be measured: it makes
/// the range begin under absolute zero.
/// @param what  what messages call the image: "run.npy, frame 3"
/// @throws Exception  that names the place of a value that is no number, or plus infinity
DegreeRange widened(DegreeRange range, const cv::Mat& degrees, const std::string& what);

/// Counts that stand for degrees Celsius: gain * count + offset.
struct DegreeScale
{
    double gain = 0.01;
    double offset = -273.15;
    std::string unit = "centikelvin";

    /// Hundredths of a kelvin where they hold the range, from -273.15 to 382.20 degrees; otherwise the
    /// finest steps that reach from its lowest to its highest temperature.
    static DegreeScale holding(const DegreeRange& range);

    /// @param degrees  CV_32FC1, within the range; minus infinity is 0
    /// @returns the nearest counts
    cv::Mat_<unsigned short> counts(const cv::Mat& degrees) const;
};

} // namespace velmo::recordings

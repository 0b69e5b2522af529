#include "recordings/Degrees.h"

#include "core/Exception.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace velmo::recordings {
namespace {

constexpr double maxCount = 65535;
constexpr double belowAll = -273.16; ///< under absolute zero: scales read "below" there

/// Neighbouring counts have to be different temperatures in single precision.
double smallestGain(const DegreeRange& range)
{
    const double farthest = std::max(std::abs(range.low), std::abs(range.high));
    return std::max(4 * std::numeric_limits<float>::epsilon() * farthest, 1e-6);
}

} // namespace

DegreeRange widened(DegreeRange range, const cv::Mat& degrees, const std::string& what)
{
    for (int y = 0; y < degrees.rows; ++y)
        for (int x = 0; x < degrees.cols; ++x) {
            const float value = degrees.at<float>(y, x);
            if (value == -std::numeric_limits<float>::infinity()) {
                range.low = std::min(range.low, belowAll);
                range.high = std::max(range.high, belowAll);
                continue;
            }
            if (!std::isfinite(value))
                VELMO_THROW(what + ": no temperature at x " + std::to_string(x) + ", y " + std::to_string(y) +
                            (std::isnan(value) ? " (not a number)" : " (infinite)"));
            range.low = std::min<double>(range.low, value);
            range.high = std::max<double>(range.high, value);
        }
    return range;
}

DegreeScale DegreeScale::holding(const DegreeRange& range)
{
    DegreeScale scale;
    const auto count = [&](double value) { return std::round((value - scale.offset) / scale.gain); };
    if (range.low > range.high || (count(range.low) >= 0 && count(range.high) <= maxCount))
        return scale;
    scale.gain = std::max((range.high - range.low) / maxCount, smallestGain(range));
    scale.offset = range.low;
    char unit[80];
    std::snprintf(unit, sizeof unit, "linear:%.17g:%.17g", scale.gain, scale.offset);
    scale.unit = unit;
    return scale;
}

cv::Mat_<unsigned short> DegreeScale::counts(const cv::Mat& degrees) const
{
    cv::Mat_<unsigned short> counts(degrees.size());
    for (int y = 0; y < degrees.rows; ++y)
        for (int x = 0; x < degrees.cols; ++x) {
            const double count = std::round((degrees.at<float>(y, x) - offset) / gain);
            counts(y, x) = static_cast<unsigned short>(std::clamp(count, 0.0, maxCount)); // rounding only
        }
    return counts;
}

} // namespace velmo::recordings

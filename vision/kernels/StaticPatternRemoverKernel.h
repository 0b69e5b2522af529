// Not installed.
#pragma once

#include <limits>
#include <opencv2/core.hpp>

#include <vector>

namespace velmo::exp::vision {

struct PatternParameters
{
    int threshold, thresholdLow, lineLimit, frameLimit;
    int minStart = std::numeric_limits<int>::max(); ///< where every search for a minimum starts
    int maxStart = std::numeric_limits<int>::min(); ///< the same for a maximum
};

/// What a correction (the upper bits of an accumulator) amounts to in counts: about 7/64 of it.
inline int patternCounts(int correction)
{
    return (correction - ((correction - 25) >> 3)) >> 3;
}

/// The definition of the filter. `out` is of the size of `in` and another matrix; the states are those of
/// frames of that size.
void removeStaticPatternPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                              cv::Mat_<int>& pixelState, const PatternParameters& parameters);

/// The fast form: the same bits; at least one pixel, `out` may be `in`. `scratch` grows to the widest frame.
void removeStaticPattern(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                         cv::Mat_<int>& pixelState, const PatternParameters& parameters,
                         std::vector<short>& scratch);

} // namespace velmo::exp::vision

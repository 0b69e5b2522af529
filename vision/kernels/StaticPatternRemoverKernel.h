// Not installed.
#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

#include <limits>
#include <vector>

namespace velmo::exp::vision {

struct PatternParameters
{
    int threshold, thresholdLow, lineLimit, frameLimit;
    int minStart = std::numeric_limits<int>::max(); ///< where every search for a minimum starts
    int maxStart = std::numeric_limits<int>::min(); ///< the same for a maximum
};

/// What a correction (the upper bits of an accumulator) amounts to in counts: about 7/64 of it. The same as
/// (7 * correction + 32) >> 6.
inline int patternCounts(int correction)
{
    return (correction - ((correction - 25) >> 3)) >> 3;
}

/// The filter, for at least one pixel. `out` is of the size of `in`, and may be `in` for the fast form only;
/// the states are those of frames of that size. `scratch` grows to what the fast form needs for the widest
/// frame.
using RemoveStaticPattern = void(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                                 cv::Mat_<int>& pixelState, const PatternParameters& parameters,
                                 std::vector<short>& scratch);
RemoveStaticPattern removeStaticPatternPlain;
extern const Forms<RemoveStaticPattern> removeStaticPattern;

} // namespace velmo::exp::vision

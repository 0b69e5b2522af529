#include "camera/colours/Range.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"

#include <algorithm>
#include <vector>

namespace velmo::camera {
namespace {

// Dead and saturated pixels are a few in a thousand; a small hot object is more.
constexpr double dAutomaticLow = 0.2;
constexpr double dAutomaticHigh = 99.8;

// A palette over fewer values than this shows the noise of a uniform wall as if it were a scene.
constexpr int s32LeastSpan = 20;

ValueRange widened(ValueRange range)
{
    const int missing = s32LeastSpan - (range.high - range.low);
    if (missing <= 0)
        return range;
    const int low = std::clamp(range.low - missing / 2, 0, 65535 - s32LeastSpan);
    return {static_cast<unsigned short>(low), static_cast<unsigned short>(low + s32LeastSpan)};
}

/// The value of the pixel that is number `rank` in order of value.
unsigned short valueAt(const std::vector<unsigned>& histogram, double rank)
{
    double below = 0;
    for (std::size_t value = 0; value < histogram.size(); ++value) {
        below += histogram[value];
        if (below > rank)
            return static_cast<unsigned short>(value);
    }
    return 65535;
}

} // namespace

RangeRule RangeRule::parse(const std::string& text, const std::string& what)
{
    RangeRule rule;
    if (text == "auto")
        return rule;
    if (text == "lock") {
        rule.m_eKind = Kind::Lock;
        return rule;
    }
    if (text.find(':') == std::string::npos)
        VELMO_THROW(what + ": '" + text + "' is not auto, lock, MIN:MAX or pLOW:pHIGH");
    const bool percentiles = text.find('p') != std::string::npos;
    const double most = percentiles ? 100 : 65535;
    const Field::Kind kind = percentiles ? Field::Kind::Percentile : Field::Kind::Whole;
    const std::vector<double> ends = parseForm(text, what, {{"MIN", kind, 0, most}, {"MAX", kind, 0, most}});
    if (ends[0] >= ends[1])
        VELMO_THROW(what + ": in '" + text + "' the minimum is not below the maximum");
    rule.m_eKind = percentiles ? Kind::Percentiles : Kind::Fixed;
    if (percentiles) {
        rule.m_dLowPercent = ends[0];
        rule.m_dHighPercent = ends[1];
    } else {
        rule.m_oFixed = {static_cast<unsigned short>(ends[0]), static_cast<unsigned short>(ends[1])};
    }
    return rule;
}

ValueRange RangeRule::of(const Frame& frame) const
{
    switch (m_eKind) {
    case Kind::Fixed:
        return m_oFixed;
    case Kind::Percentiles:
        return percentiles(frame, m_dLowPercent, m_dHighPercent);
    default:
        return widened(percentiles(frame, dAutomaticLow, dAutomaticHigh));
    }
}

ValueRange unite(ValueRange left, ValueRange right)
{
    return {std::min(left.low, right.low), std::max(left.high, right.high)};
}

ValueRange percentiles(const Frame& frame, double lowPercent, double highPercent)
{
    // Counting beats sorting at any size: 64 Ki counters stay in the cache.
    std::vector<unsigned> histogram(65536);
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            ++histogram[frame[r][c]];
    const double last = static_cast<double>(frame.total()) - 1;
    return {valueAt(histogram, last * lowPercent / 100), valueAt(histogram, last * highPercent / 100)};
}

} // namespace velmo::camera

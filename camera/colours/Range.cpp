#include "camera/colours/Range.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"

#include <algorithm>
#include <cmath>

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

RangeRule::RangeRule(const Settings& settings, const Thermometer& thermometer)
{
    const std::string key = "colours/range", text = settings.text(key);
    const std::vector<double> ends = settings.numbers(key);
    if (text == "lock") {
        m_eKind = Kind::Lock;
    } else if (text.front() == 'p') {
        m_eKind = Kind::Percentiles;
        m_dLowPercent = ends[0];
        m_dHighPercent = ends[1];
    } else if (!ends.empty()) {
        m_eKind = Kind::Fixed;
        m_oHeld = {thermometer.valueOf(split(text, ':')[0], Thermometer::Edge::AtOrAbove, key + " MIN"),
                   thermometer.valueOf(split(text, ':')[1], Thermometer::Edge::AtOrBelow, key + " MAX")};
        if (m_oHeld.low >= m_oHeld.high)
            VELMO_THROW(key + ": '" + text + "' has less than two values");
    }
}

bool RangeRule::learning() const
{
    return m_eKind == Kind::Lock && m_nLearnt < nLearnFrames;
}

void RangeRule::learn(const Frame& frame)
{
    if (!learning())
        return;
    const ValueRange range = automatic(frame);
    m_oHeld = m_nLearnt++ == 0 ? range : unite(m_oHeld, range);
}

void RangeRule::hold()
{
    m_nLearnt = nLearnFrames;
}

ValueRange RangeRule::of(const Frame& frame)
{
    switch (m_eKind) {
    case Kind::Percentiles:
        return percentiles(frame, m_dLowPercent, m_dHighPercent, m_vecHistogram);
    case Kind::Automatic:
        return glide(automatic(frame));
    case Kind::Lock:
        if (learning())
            learn(frame);
        else
            widen(frame);
        return m_oHeld;
    default:
        return m_oHeld;
    }
}

ValueRange RangeRule::glide(ValueRange target)
{
    constexpr double dSameScene = 0.5; // what both ranges have in common, of what they have together
    const double common = std::min<double>(m_dHigh, target.high) - std::max<double>(m_dLow, target.low);
    const double together = std::max<double>(m_dHigh, target.high) - std::min<double>(m_dLow, target.low);
    const double share = m_dLow == m_dHigh || common < dSameScene * together ? 1 : dGlide;
    m_dLow += share * (target.low - m_dLow);
    m_dHigh += share * (target.high - m_dHigh);
    return {static_cast<unsigned short>(std::lround(m_dLow)),
            static_cast<unsigned short>(std::lround(m_dHigh))};
}

void RangeRule::widen(const Frame& frame)
{
    constexpr std::size_t nOneIn = 100;
    std::size_t outside = 0;
    for (int r = 0; r < frame.rows; ++r)
        outside += static_cast<std::size_t>(
            std::count_if(frame[r], frame[r] + frame.cols,
                          [&](unsigned short value) { return value < m_oHeld.low || value > m_oHeld.high; }));
    if (outside * nOneIn <= frame.total())
        return;
    m_oHeld = unite(m_oHeld, automatic(frame));
    ++m_nWidenings;
}

ValueRange RangeRule::automatic(const Frame& frame)
{
    return widened(percentiles(frame, dAutomaticLow, dAutomaticHigh, m_vecHistogram));
}

ValueRange unite(ValueRange left, ValueRange right)
{
    return {std::min(left.low, right.low), std::max(left.high, right.high)};
}

ValueRange percentiles(const Frame& frame, double lowPercent, double highPercent,
                       std::vector<unsigned>& histogram)
{
    // Counting beats sorting at any size: 64 Ki counters stay in the cache.
    histogram.assign(65536, 0);
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            ++histogram[frame[r][c]];
    const double last = static_cast<double>(frame.total()) - 1;
    return {valueAt(histogram, last * lowPercent / 100), valueAt(histogram, last * highPercent / 100)};
}

} // namespace velmo::camera

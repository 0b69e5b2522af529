#pragma once

#include "camera/Frame.h"
#include "camera/Settings.h"
#include "camera/temperature/Thermometer.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <cstddef>
#include <vector>

namespace velmo::camera {

/// The values that the ends of a palette stand for.
struct ValueRange
{
    unsigned short low;
    unsigned short high;

    bool operator==(const ValueRange& other) const { return low == other.low && high == other.high; }
    bool operator!=(const ValueRange& other) const { return !(*this == other); }
};

/// How the range of a picture is chosen: colours/range.
class VELMO_API RangeRule
{
public:
    /// How many frames `lock` looks at.
    static constexpr std::size_t nLearnFrames = 10;

    /// The part of its way that what glides after the frames goes with each.
    static constexpr double dGlide = 1 / 8.0;

    /// @throws Exception  for a range that the thermometer cannot read, or that is empty
    explicit RangeRule(const Settings& settings = {}, const Thermometer& thermometer = Thermometer());

    /// The range for the next frame. What is automatic glides after the frames, in some eight of them, and
    /// jumps where the scene becomes another. What is locked learns as long as it does, and is widened by a
    /// frame of which more than 1 percent lies outside.
    ValueRange of(const Frame& frame);

    /// How often what is locked was widened.
    std::size_t widenings() const { return m_nWidenings; }

    /// Whether the first frames still decide about the range that is held then.
    bool learning() const;
    void learn(const Frame& frame);
    /// Ends learning: what was learnt is held.
    void hold();

private:
    enum class Kind
    {
        Automatic,
        Lock,
        Fixed,
        Percentiles
    };

    ValueRange automatic(const Frame& frame);
    ValueRange glide(ValueRange target);
    void widen(const Frame& frame);

    Kind m_eKind = Kind::Automatic;
    ValueRange m_oHeld = {0, 65535};
    double m_dLowPercent = 0;
    double m_dHighPercent = 100;
    std::size_t m_nLearnt = 0;
    std::size_t m_nWidenings = 0;
    double m_dLow = 0; ///< of what glides; equal before the first frame
    double m_dHigh = 0;
    std::vector<unsigned> m_vecHistogram; ///< kept for its memory
};

/// The smallest range that holds both.
VELMO_API ValueRange unite(ValueRange left, ValueRange right);

/// The values below which `lowPercent` and `highPercent` of the pixels lie.
/// @param histogram  memory for the counting
VELMO_API ValueRange percentiles(const Frame& frame, double lowPercent, double highPercent,
                                 std::vector<unsigned>& histogram);

} // namespace velmo::camera

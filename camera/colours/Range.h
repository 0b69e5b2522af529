#pragma once

#include "recordings/Frames.h"

#include <cstddef>
#include <string>

namespace thermal {

/// The values that the ends of a palette stand for.
struct ValueRange
{
    unsigned short low;
    unsigned short high;
};

/// How the range of a picture is chosen.
class RangeRule
{
public:
    /// How many frames `lock` looks at.
    static constexpr std::size_t nLearnFrames = 10;

    /// @param text  `auto`, `lock`, `MIN:MAX` in raw values, or `pLOW:pHIGH` in percent of the pixels
    /// @throws UsageError  for anything else
    static RangeRule parse(const std::string& text);

    /// Whether the range is that of the first nLearnFrames frames together.
    bool locks() const { return m_eKind == Kind::Lock; }

    /// The range for this frame; for a rule that locks, what this frame adds to it.
    ValueRange of(const Frame& frame) const;

private:
    enum class Kind
    {
        Automatic,
        Lock,
        Fixed,
        Percentiles
    };

    Kind m_eKind = Kind::Automatic;
    ValueRange m_oFixed = {0, 65535};
    double m_dLowPercent = 0;
    double m_dHighPercent = 100;
};

/// The smallest range that holds both.
ValueRange unite(ValueRange left, ValueRange right);

/// The values below which `lowPercent` and `highPercent` of the pixels lie.
ValueRange percentiles(const Frame& frame, double lowPercent, double highPercent);

} // namespace thermal

#pragma once

#include "camera/Frame.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <cstddef>
#include <string>

namespace velmo::camera {

/// The values that the ends of a palette stand for.
struct ValueRange
{
    unsigned short low;
    unsigned short high;
};

/// How the range of a picture is chosen.
class VELMO_API RangeRule
{
public:
    /// How many frames `lock` looks at.
    static constexpr std::size_t nLearnFrames = 10;

    /// @param text  `auto`, `lock`, `MIN:MAX` in raw values, or `pLOW:pHIGH` in percent of the pixels
    /// @param what  begins the message of what is refused
    /// @throws Exception  for anything else
    static RangeRule parse(const std::string& text, const std::string& what = "range");

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
VELMO_API ValueRange unite(ValueRange left, ValueRange right);

/// The values below which `lowPercent` and `highPercent` of the pixels lie.
VELMO_API ValueRange percentiles(const Frame& frame, double lowPercent, double highPercent);

} // namespace velmo::camera

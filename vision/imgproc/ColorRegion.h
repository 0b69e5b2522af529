#pragma once

namespace velmo::vision {

/// A band of frame values, inclusive at both ends, that is painted in one colour over the palette: an alarm
/// threshold, an isotherm.
struct ColorRegion
{
    /// All zero.
    ColorRegion() = default;

    ColorRegion(unsigned short upper, unsigned short lower, unsigned int color)
        : m_u16Upper(upper), m_u16Lower(lower), m_u32Color(color)
    {}

    unsigned short m_u16Upper = 0; ///< highest frame value of the band
    unsigned short m_u16Lower = 0; ///< lowest frame value of the band
    unsigned int m_u32Color = 0;   ///< 0x00RRGGBB; the top byte goes into the table's spare byte

    friend bool operator==(const ColorRegion& a, const ColorRegion& b)
    {
        return a.m_u16Upper == b.m_u16Upper && a.m_u16Lower == b.m_u16Lower && a.m_u32Color == b.m_u32Color;
    }
    friend bool operator!=(const ColorRegion& a, const ColorRegion& b) { return !(a == b); }
};

} // namespace velmo::vision

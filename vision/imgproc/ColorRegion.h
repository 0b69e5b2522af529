#pragma once

namespace velmo::vision {

/// A band of frame values, inclusive at both ends, that is painted in one colour over the palette: an alarm
/// threshold, an isotherm.
struct ColorRegion
{
    ColorRegion(unsigned short upper, unsigned short lower, unsigned int color)
        : m_u16Upper(upper), m_u16Lower(lower), m_u32Color(color)
    {}

    unsigned short m_u16Upper; ///< highest frame value of the band
    unsigned short m_u16Lower; ///< lowest frame value of the band
    unsigned int m_u32Color;   ///< 0x00RRGGBB; the top byte goes into the table's spare byte
};

} // namespace velmo::vision

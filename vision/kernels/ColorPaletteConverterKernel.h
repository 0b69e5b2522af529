// Not installed.
#pragma once

#include "core/physics/DewPoint.h"

#include <cstddef>
#include <vector>

namespace velmo::vision {

/// Entries of a lookup table: one per 16-bit frame value, four bytes each: the three of a picture's pixel in
/// their order, and a spare one.
constexpr int tableEntries = 65536;

/// Entries of a palette that is stretched over humidity: 0 to 100 percent in steps of a tenth.
constexpr int humiditySteps = 1001;

/// An entry whose bytes lie in memory in this order.
constexpr unsigned int packEntry(unsigned int first, unsigned int second, unsigned int third,
                                 unsigned int spare)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return first | second << 8 | third << 16 | spare << 24;
#else
    return first << 24 | second << 16 | third << 8 | spare;
#endif
}

/// Colours `count` pixels: the first three bytes of each table[in[n]].
void palettizePlain(const unsigned short* in, unsigned char* out, std::size_t count,
                    const unsigned int* table);
void palettizeBySixteen(const unsigned short* in, unsigned char* out, std::size_t count,
                        const unsigned int* table);

/// The definition of a stretched palette: cv::resize, bilinear, to `span` entries in output order.
/// @throws cv::Exception  for a palette that is empty or no multiple of 3 bytes long, and for span < 1
std::vector<unsigned int> stretchByResize(const std::vector<unsigned char>& palette, int span, bool bgr);

/// The same by following the fixed-point arithmetic of cv::resize, several times faster. Only for
/// 1..pointsStretchedOwn whole points and spans of 1..65536.
std::vector<unsigned int> stretchByRuns(const std::vector<unsigned char>& palette, int span, bool bgr);
constexpr std::size_t pointsStretchedOwn = 4096;

/// The fast form if it may be used: cv::resize is the definition, and another version or build of it
/// may round differently, so the two are compared once in each process.
std::vector<unsigned int> stretchPalette(const std::vector<unsigned char>& palette, int span, bool bgr);

/// Fills the table from a palette stretched to max - min + 1 entries: the coldest colour below min, that of
/// max - 1 from max on.
void fillTablePlain(unsigned int* table, const unsigned int* stretched, int min, int max);
void fillTable(unsigned int* table, const unsigned int* stretched, int min, int max);

/// Fills the table from a palette stretched to humiditySteps entries.
/// @throws exp::Exception  for air that DewPoint refuses; the table is unchanged then
void fillTableHumidPlain(unsigned int* table, const unsigned int* stretched,
                         const exp::quantity::Temperature<exp::MarkedFloat>& airTemperature,
                         const exp::quantity::Relation<exp::MarkedFloat>& humidity);
void fillTableHumid(unsigned int* table, const unsigned int* stretched,
                    const exp::quantity::Temperature<exp::MarkedFloat>& airTemperature,
                    const exp::quantity::Relation<exp::MarkedFloat>& humidity);

/// Which of the humiditySteps entries shows a surface humidity of 0..100 percent, halves up.
inline int humidityStep(float percent)
{
    return static_cast<int>(percent * 10.0f + 0.5f); // NOLINT(bugprone-incorrect-roundings): as required
}

} // namespace velmo::vision

// Not installed.
#pragma once

#include "core/Forms.h"

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
using Palettize = void(const unsigned short* in, unsigned char* out, std::size_t count,
                       const unsigned int* table);
Palettize palettizePlain;
extern const exp::Forms<Palettize> palettize;

/// A palette stretched to `span` entries in output order, bilinear. The definition is cv::resize; the fast
/// form follows its fixed-point arithmetic, for 1..pointsStretchedOwn whole points and spans of 1..65536
/// only. `memory` is used again for the entries.
/// @throws cv::Exception  for a palette that is empty or no multiple of 3 bytes long, and for span < 1
using Entries = std::vector<unsigned int>;
using Stretch = Entries(const std::vector<unsigned char>& palette, int span, bool bgr, Entries memory);
Stretch stretchByResize;
extern const exp::Forms<Stretch> stretch;
constexpr std::size_t pointsStretchedOwn = 4096;

/// Whether the own stretch gives what cv::resize gives, on a palette of noise: widened a little and a lot,
/// narrowed, a single point. Costs a few microseconds.
bool ownStretchIsExact();

/// The fast form if it may be used: another version or build of cv::resize may round differently, so the two
/// are compared once in each process.
Entries stretchPalette(const std::vector<unsigned char>& palette, int span, bool bgr, Entries memory = {});

/// Fills the table from a palette stretched to max - min + 1 entries: the coldest colour below min, that of
/// max - 1 from max on.
using FillTable = void(unsigned int* table, const unsigned int* stretched, int min, int max);
FillTable fillTablePlain;
extern const exp::Forms<FillTable> fillTable;

/// Fills the table from a palette stretched to humiditySteps entries. `moisture` holds for each frame value
/// the humidity at a surface, 0..100 percent.
using FillTableHumid = void(unsigned int* table, const unsigned int* stretched, const float* moisture);
FillTableHumid fillTableHumidPlain;
extern const exp::Forms<FillTableHumid> fillTableHumid;

/// Which of the humiditySteps entries shows a surface humidity of 0..100 percent, halves up.
inline int humidityStep(float percent)
{
    // The sum may round up what lies just below a half; the tables are defined with it.
    return static_cast<int>(percent * 10.0f + 0.5f); // NOLINT(bugprone-incorrect-roundings)
}

} // namespace velmo::vision

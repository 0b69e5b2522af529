// Not installed.
#pragma once

#include "core/memory/ByteCursor.h"

#include <cstdint>

namespace velmo::exp {

/// What the header of a PxM image says.
struct PxMHeader
{
    bool bText = false; ///< the raster is decimal numbers, not bytes
    std::uint32_t u32Width = 0;
    std::uint32_t u32Height = 0;
    std::uint32_t u32Channels = 1;
    std::uint32_t u32MaxValue = 0;

    std::uint64_t rowSamples() const { return std::uint64_t{u32Width} * u32Channels; }
    std::uint64_t sampleBytes() const { return u32MaxValue > 255 ? 2 : 1; }
};

/// Reads a header and leaves the cursor on the first byte of the raster.
/// @throws Exception  if it is not a complete header of P2, P3, P5, P6 or P7 with sides that fit an int.
PxMHeader readPxMHeader(ByteCursor& bytes);

/// What separates tokens: the format's white space, whatever the locale.
constexpr bool isPxMSpace(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

constexpr bool isPxMDigit(int byte)
{
    return byte >= '0' && byte <= '9';
}

/// `number` with one more decimal digit.
/// @throws Exception  if that is above `limit`, which is below 2^32.
std::uint32_t appendPxMDigit(std::uint32_t number, int digit, std::uint32_t limit);

} // namespace velmo::exp

// Not installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>

namespace velmo::exp {

/// What a storage file may hold at most, so that none can exhaust stack, time or memory.
struct StorageLimits
{
    static constexpr std::size_t u64Text = std::size_t{64} << 20; ///< bytes of text
    static constexpr int s32Depth = 64;                           ///< nested elements, the root counted
    static constexpr int s32Attributes = 256;                     ///< of one element
};

/// Reads up to `count` bytes from where the stream stands; the end of the stream is no failure.
/// Memory grows with what is there, not with `count`.
/// @throws Exception  if the stream can not be read: a directory opened as a file
std::string readUpTo(std::istream& in, std::uint64_t count);

/// Reads the rest of a stream.
/// @throws Exception  as readUpTo, and for more text than the limit
std::string readText(std::istream& in);

/// @throws Exception  if `id` leads through more groups than the limit: a short text could ask for very many
void checkDepthOf(const std::string& id);

} // namespace velmo::exp

#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What follows is made of whole numbers alone, so that it is the same whatever compiles and runs it. Where a
// test expects the hash of a result, it sees each change of it: after one that is meant, and that the tests
// beside it approve, the hashes that are printed take the place of those that stand there.

template <class Values>
unsigned hashOf(const Values& values, unsigned hash = 0)
{
    for (const unsigned value : values)
        hash = hash * 16777619U + value;
    return hash;
}

/// Of its bytes, whether or not they have a sign.
inline unsigned hashOf(const std::string& text, unsigned hash = 0)
{
    return hashOf(std::vector<unsigned char>(text.begin(), text.end()), hash);
}

/// A number of deviation 37 for each three others.
inline int noiseOf(int a, int b, int c)
{
    std::uint32_t mixed = static_cast<unsigned>(a) * 0x9E3779B1U ^ static_cast<unsigned>(b) * 0x85EBCA77U ^
                          static_cast<unsigned>(c) * 0xC2B2AE3DU;
    for (const std::uint32_t factor : {0x2C1B3C6DU, 0x297A2D39U, 0x85EBCA6BU})
        mixed = (mixed ^ mixed >> 15) * factor;
    int sum = -126;
    for (int byte = 0; byte < 4; ++byte)
        sum += static_cast<int>(mixed >> 8 * byte & 63U);
    return sum;
}

/// The same with slopes between: at a place in the world, of which both numbers are above 0.
/// @param side  of its squares
inline int textureAt(int x, int y, int side)
{
    const int i = x / side, j = y / side, u = x % side, v = y % side;
    const auto across = [&](int row) {
        return noiseOf(side, i, row) * (side - u) + noiseOf(side, i + 1, row) * u;
    };
    return (across(j) * (side - v) + across(j + 1) * v) / (side * side);
}

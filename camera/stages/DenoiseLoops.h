// Not installed.
#pragma once

#include "camera/stages/DenoiseKernel.h"

#include "core/Clones.h"

#include <cmath>

/// What the loops of the denoiser do with one pixel: the plain and the fast forms share it, because
/// floating point must be evaluated in one order.

namespace velmo::camera {

VELMO_INLINE float clamped(float value, float low, float high)
{
    value = value < low ? low : value;
    return value < high ? value : high;
}

/// Halves go up. For values above -1024.
VELMO_INLINE int rounded(float value)
{
    return static_cast<int>(value + 1024.5F) - 1024;
}

VELMO_INLINE float meanOfFour(float a, float b, float m, float d)
{
    return ((a + b) + (m + d)) * 0.25F;
}

/// How sure it is that a pixel changed, 0 to 1: from the mean square of the residuals around it, its own
/// square and the square of their sum, all over what noise alone would give.
VELMO_INLINE float changeOf(float squares, float own, float together, float least)
{
    float change = (squares - 2) * (1 / 3.0F);
    const float single = (own - 25) * (1 / 24.0F), common = (together - 24) * (1 / 36.0F);
    change = change < single ? single : change;
    change = change < common ? common : change;
    return clamped(change, least, 1);
}

/// The slope of the scene, by the Sobel operator: 8 times the difference of neighbours.
VELMO_INLINE float gradientX(const float* above, const float* row, const float* below, int c)
{
    return ((above[c + 1] - above[c - 1]) + (below[c + 1] - below[c - 1])) + 2 * (row[c + 1] - row[c - 1]);
}

VELMO_INLINE float gradientY(const float* above, const float* below, int c)
{
    return ((below[c - 1] - above[c - 1]) + (below[c + 1] - above[c + 1])) + 2 * (below[c] - above[c]);
}

/// Adds the products of a gradient and a residual that `counts`, 1 or 0.
VELMO_INLINE void addProducts(float x, float y, float r, float counts, GradientSums& sums, int lane)
{
    x *= counts, y *= counts, r *= counts;
    sums.xx[lane] += x * x;
    sums.xy[lane] += x * y;
    sums.yy[lane] += y * y;
    sums.xr[lane] += x * r;
    sums.yr[lane] += y * r;
    sums.rr[lane] += r * r;
}

/// Adds the squares of a pixel that `counts`, 1 or 0.
VELMO_INLINE void addSquares(const Gain& of, std::ptrdiff_t stride, std::ptrdiff_t at, float counts,
                             GainSums& sums, int lane)
{
    const auto smoothAcross = [&](const float* pixel) {
        return pixel[0] + of.sideX * (pixel[-1] - 2 * pixel[0] + pixel[1]);
    };
    const float* pixel = of.estimate + at;
    const float middle = smoothAcross(pixel);
    const float kept =
        middle + of.sideY * (smoothAcross(pixel - stride) - 2 * middle + smoothAcross(pixel + stride));
    const float before = (((of.residual[at] + pixel[0]) - kept) - of.residualLevel) * counts,
                after = (of.rest[at] - of.restLevel) * counts, moves = (of.moved[at] - kept) * counts;
    sums.before[lane] += before * before;
    sums.after[lane] += after * after;
    sums.moves[lane] += moves * moves;
}

VELMO_INLINE float explainedShare(const Shift& shift, float gradientAcross, float gradientDown)
{
    const float moved = shift.x * gradientAcross + shift.y * gradientDown;
    const float share = moved * moved / (moved * moved + shift.variance);
    return share < shift.least ? shift.least : share;
}

/// Moves a pixel's estimate towards the frame; returns in 256ths how sure it is that it changed.
VELMO_INLINE int updatePixel(float residual, float before, float sum, float square, float least,
                             const Update& update, float& estimate, float& age)
{
    constexpr float dUnit = s32ResidualUnit;
    constexpr float dSpread = 0.05F; // of the residuals around it a pixel takes this share as its own
    const float scaled = residual * (1 / update.deviation);
    const float change = changeOf(square * (1 / (25 * dUnit * dUnit)), scaled * scaled,
                                  sum * sum * (1 / (25 * dUnit * dUnit)), least);
    const float before1 = age * (1 - change) + 1;
    float gain = 1 / before1;
    gain = gain < update.leastGain ? update.leastGain : gain;
    gain = gain < change ? change : gain;
    age = before1 < 1000.0F ? before1 : 1000.0F;
    const float around = sum * (update.deviation * (1 / (25 * dUnit)));
    estimate = (before + gain * residual) + (1 - gain) * dSpread * around;
    return static_cast<int>(change * 256);
}

VELMO_INLINE short sizeOf(short value) // -32768 stays
{
    return static_cast<short>(value < 0 ? -value : value);
}

/// 0 to 64: how far a gate is open for a step of that size. `slope` is 64 * 256 / (upper - lower).
VELMO_INLINE short opening(short size, Gate gate, short slope)
{
    auto left = static_cast<short>(gate.upper - size);
    const auto width = static_cast<short>(gate.upper - gate.lower);
    left = left < 0 ? short{0} : left;
    left = left < width ? left : width;
    return static_cast<short>(static_cast<u16>(left * slope) >> 8); // at most 64 * 256
}

/// The size of what a gate between `from` and `to` sees of their difference: a slope that goes on before and
/// behind them is no step, and only what it bends there counts, in `quarters`. Steeper than 500 it is left
/// alone: what flows has to stay within 16 bits.
VELMO_INLINE short stepOf(short before, short from, short to, short after, short quarters)
{
    constexpr short largest = 500;
    const auto difference = static_cast<short>(to - from);
    const short size = sizeOf(difference);
    const short one = sizeOf(static_cast<short>(difference - static_cast<short>(from - before))),
                other = sizeOf(static_cast<short>(difference - static_cast<short>(after - to)));
    const short bend = one < other ? other : one;
    const auto counted = static_cast<short>(static_cast<short>(bend >> 2) * quarters);
    const short bent = size < largest ? counted : size;
    return size < bent ? size : bent;
}

inline short slopeOf(Gate gate)
{
    return static_cast<short>(64 * 256 / (gate.upper - gate.lower));
}

/// Of 25 pixels with four gates each, 64 when open: from 0.6 of them on detail begins to count as noise, at
/// 0.85 all of it does. In 64ths.
VELMO_INLINE short flatness(short open)
{
    constexpr short all = 25 * 4 * 64 / 4; // counted in fours, to stay within 16 bits with the slope
    constexpr short from = all * 60 / 100, width = all * 25 / 100;
    auto above = static_cast<short>(static_cast<short>(open >> 2) - from);
    above = above < 0 ? short{0} : above;
    above = above < width ? above : width;
    // 400 * 41 / 256 is 64. The upper half of a product is one operation.
    return static_cast<short>(static_cast<std::uint32_t>(static_cast<u16>(above)) * u16{41 * 256} >> 16);
}

VELMO_INLINE short takenOff(short detail, short flat)
{
    return static_cast<short>(static_cast<short>(detail * flat + 32) >> 6);
}

} // namespace velmo::camera

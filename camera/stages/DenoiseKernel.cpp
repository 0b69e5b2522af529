#include "camera/stages/DenoiseKernel.h"

#include "camera/stages/DenoiseLoops.h"
#include "core/Lanes.h"

#include <algorithm>
#include <cstring>

namespace velmo::camera {
namespace {

VELMO_CLONES ClippedSum sumDifferencesLoop(const u16* __restrict frame, const float* __restrict estimate,
                                           float level, float scale, int* __restrict sums,
                                           int* __restrict inside, int count)
{
    int sum = 0, within = 0;
    for (int c = 0; c < count; ++c) {
        const float difference = (static_cast<float>(frame[c]) - estimate[c]) - level;
        const int value = rounded(clamped(difference * scale, -s32LineClip, s32LineClip));
        const int size = value < 0 ? -value : value;
        const int counts = static_cast<int>(static_cast<unsigned>(size - s32LineClip) >> 31);
        sums[c] += value;
        inside[c] += counts;
        sum += value;
        within += counts;
    }
    return {sum, within};
}

ClippedSum sumDifferencesFast(const Comparison& of, float scale, int* sums, int* inside, int count)
{
    return sumDifferencesLoop(of.frame, of.estimate, of.level, scale, sums, inside, count);
}

VELMO_CLONES void takeResidualLoop(const u16* __restrict frame, const float* __restrict from, float level,
                                   const float* __restrict columns, float row, float share, float scale,
                                   float* __restrict estimate, float* __restrict residual,
                                   short* __restrict coarse, int count)
{
    for (int c = 0; c < count; ++c) {
        const float stripe = columns[c] + row;
        const float before = from[c] + share * stripe;
        const float rest = ((static_cast<float>(frame[c]) - level) - stripe) - before;
        estimate[c] = before;
        residual[c] = rest;
        coarse[c] = static_cast<short>(rounded(clamped(rest * scale, -s32ResidualClip, s32ResidualClip)));
    }
}

void takeResidualFast(const Comparison& of, const Stripes& stripes, float scale, float* estimate,
                      float* residual, short* coarse, int count)
{
    takeResidualLoop(of.frame, of.estimate, of.level, stripes.columns, stripes.row, stripes.share, scale,
                     estimate, residual, coarse, count);
}

VELMO_CLONES void halveFast(const float* __restrict upper, const float* __restrict lower,
                            float* __restrict out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = meanOfFour(upper[2 * c], lower[2 * c], upper[2 * c + 1], lower[2 * c + 1]);
}

VELMO_CLONES void halveComparisonLoop(const u16* __restrict upper, const u16* __restrict lower,
                                      const float* __restrict above, const float* __restrict below,
                                      float* __restrict halved, float* __restrict residual, int count)
{
    for (int c = 0; c < count; ++c) {
        const int sum = upper[2 * c] + lower[2 * c] + upper[2 * c + 1] + lower[2 * c + 1];
        const float mean = meanOfFour(above[2 * c], below[2 * c], above[2 * c + 1], below[2 * c + 1]);
        halved[c] = mean;
        residual[c] = static_cast<float>(sum) * 0.25F - mean;
    }
}

void halveComparisonFast(const u16* const (&frame)[2], const float* const (&estimate)[2], float* halved,
                         float* residual, int count)
{
    halveComparisonLoop(frame[0], frame[1], estimate[0], estimate[1], halved, residual, count);
}

VELMO_CLONES void mixLinesLoop(const float* a, const float* b, const float* m, const float* d, float wa,
                               float wb, float wm, float wd, float* __restrict out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = (a[c] * wa + b[c] * wb) + (m[c] * wm + d[c] * wd);
}

void mixLinesFast(const float* const* lines, const float* weights, float* out, int count)
{
    mixLinesLoop(lines[0], lines[1], lines[2], lines[3], weights[0], weights[1], weights[2], weights[3], out,
                 count);
}

/// 1 for the pixels of a line, 0 behind its end.
VELMO_INLINE float countsAt(int c, int count)
{
    return c < count ? 1.0F : 0.0F;
}

VELMO_CLONES void sumGradientsFast(const float* estimate, const float* residual, float level, float scale,
                                   const Part& of, GradientSums& total)
{
    const Part part = of;
    GradientSums sums = total;
    for (int r = 0; r < part.rows; r += part.every) {
        const float* row = estimate + r * part.stride;
        const float *above = row - part.stride, *below = row + part.stride,
                    *rest = residual + r * part.stride;
        for (int c = 0; c < part.count; c += 8)
            for (int i = 0; i < 8; ++i)
                addProducts(gradientX(above, row, below, c + i) * scale,
                            gradientY(above, below, c + i) * scale, rest[c + i] - level,
                            countsAt(c + i, part.count), sums, i);
    }
    total = sums;
}

VELMO_CLONES void takeRestFast(const float* __restrict estimate, const float* __restrict residual,
                               const float* __restrict moved, float* __restrict rest, int count)
{
    for (int c = 0; c < count; ++c)
        rest[c] = (estimate[c] + residual[c]) - moved[c];
}

VELMO_CLONES void sumLineFast(const float* values, float* total, int count)
{
    float sums[8];
    std::copy_n(total, 8, sums);
    int c = 0;
    for (; c + 8 <= count; c += 8)
        for (int i = 0; i < 8; ++i)
            sums[i] += values[c + i];
    for (int i = 0; c + i < count; ++i)
        sums[i] += values[c + i];
    std::copy_n(sums, 8, total);
}

VELMO_CLONES void sumGainsFast(const Gain& gain, const Part& in, GainSums& total)
{
    const Gain of = gain;
    const Part part = in;
    GainSums sums = total;
    for (int r = 0; r < part.rows; r += part.every)
        for (int c = 0; c < part.count; c += 8)
            for (int i = 0; i < 8; ++i)
                addSquares(of, part.stride, r * part.stride + c + i, countsAt(c + i, part.count), sums, i);
    total = sums;
}

VELMO_CLONES void explainByShiftFast(const float* above, const float* row, const float* below,
                                     const Shift& to, float* __restrict explained, int count)
{
    const Shift shift = to;
    for (int c = 0; c < count; ++c)
        explained[c] = explainedShare(shift, gradientX(above, row, below, c), gradientY(above, below, c));
}

VELMO_CLONES void sumOfFiveLoop(const short* __restrict a, const short* __restrict b,
                                const short* __restrict m, const short* __restrict d,
                                const short* __restrict e, short* __restrict sums, short* __restrict squares,
                                int count)
{
    for (int c = 0; c < count; ++c) {
        sums[c] = static_cast<short>(a[c] + b[c] + m[c] + d[c] + e[c]);
        squares[c] = static_cast<short>(static_cast<short>(a[c] * a[c]) + static_cast<short>(b[c] * b[c]) +
                                        static_cast<short>(m[c] * m[c]) + static_cast<short>(d[c] * d[c]) +
                                        static_cast<short>(e[c] * e[c]));
    }
}

void sumOfFiveFast(const short* const* rows, short* sums, short* squares, int count)
{
    sumOfFiveLoop(rows[0], rows[1], rows[2], rows[3], rows[4], sums, squares, count);
}

VELMO_CLONES int updateLineLoop(const u16* __restrict frame, const float* __restrict columns, float row,
                                float share, float level, const short* __restrict sums,
                                const short* __restrict squares, const float* __restrict explained,
                                const Update& with, float* __restrict estimate, float* __restrict age,
                                int count)
{
    const Update update = with;
    int changed = 0;
    for (int c = 0; c < count; ++c) {
        const auto sum = static_cast<short>(sums[c - 2] + sums[c - 1] + sums[c] + sums[c + 1] + sums[c + 2]);
        const auto square = static_cast<short>(squares[c - 2] + squares[c - 1] + squares[c] + squares[c + 1] +
                                               squares[c + 2]);
        const float stripe = columns[c] + row;
        const float before = estimate[c] + share * stripe;
        const float residual = ((static_cast<float>(frame[c]) - level) - stripe) - before;
        changed += updatePixel(residual, before, static_cast<float>(sum), static_cast<float>(square),
                               explained[c], update, estimate[c], age[c]);
    }
    return changed;
}

int updateLineFast(const u16* frame, const Stripes& stripes, float level, const Update& update,
                   float* estimate, float* age, int count)
{
    return updateLineLoop(frame, stripes.columns, stripes.row, stripes.share, level, update.sums,
                          update.squares, update.explained, update, estimate, age, count);
}

VELMO_CLONES void splitAcrossFast(const float* __restrict in, int step, float* __restrict low,
                                  float* __restrict high, int count)
{
    const float* left = in - step;
    const float* right = in + step;
    for (int c = 0; c < count; ++c) {
        const float smooth = (left[c] + right[c]) * 0.25F + in[c] * 0.5F;
        low[c] = smooth;
        high[c] = in[c] - smooth;
    }
}

VELMO_CLONES void splitDownLoop(const float* __restrict above, const float* __restrict row,
                                const float* __restrict below, float* __restrict low,
                                float* __restrict squares, int count)
{
    for (int c = 0; c < count; ++c) {
        const float smooth = (above[c] + below[c]) * 0.25F + row[c] * 0.5F;
        const float rest = row[c] - smooth;
        squares[c] += rest * rest;
        low[c] = smooth;
    }
}

VELMO_CLONES void addSquaresDown(const float* __restrict above, const float* __restrict row,
                                 const float* __restrict below, float* __restrict squares, int count)
{
    for (int c = 0; c < count; ++c) {
        const float rest = row[c] - ((above[c] + below[c]) * 0.25F + row[c] * 0.5F);
        squares[c] += rest * rest;
    }
}

void splitDownFast(const float* above, const float* row, const float* below, float* low, float* squares,
                   int count)
{
    if (low == nullptr)
        addSquaresDown(above, row, below, squares, count);
    else
        splitDownLoop(above, row, below, low, squares, count);
}

VELMO_CLONES void toLanesFast(const float* __restrict estimate, float base, float scale,
                              short* __restrict out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = static_cast<short>(static_cast<int>((estimate[c] - base) * scale));
}

/// Cut to a limit; whether it was inside, as 0 or 1.
VELMO_INLINE short cut(short value, short limit)
{
    return exp::lower(exp::higher(value, static_cast<short>(-limit)), limit);
}

VELMO_INLINE short isInside(short value, short limit)
{
    const short size = exp::higher(value, static_cast<short>(-value));
    return static_cast<short>(static_cast<u16>(static_cast<short>(size - limit)) >> 15);
}

VELMO_CLONES void sumAcrossLoop(const short* __restrict in, short limit, int* __restrict sums,
                                int* __restrict inside, int count)
{
    for (int c = 0; c < count; ++c) {
        const auto nine = static_cast<short>(in[c - 4] + in[c - 3] + in[c - 2] + in[c - 1] + in[c] +
                                             in[c + 1] + in[c + 2] + in[c + 3] + in[c + 4]);
        const short value = cut(static_cast<short>(9 * in[c] - nine), limit);
        sums[c] += value;
        inside[c] += isInside(value, limit);
    }
}

void sumAcrossFast(const short* in, int limit, int* sums, int* inside, int count)
{
    sumAcrossLoop(in, static_cast<short>(limit), sums, inside, count);
}

VELMO_CLONES ClippedSum sumDownLoop(const short* __restrict in, const short* __restrict nine, short limit,
                                    int count)
{
    int sum = 0, within = 0;
    for (int c = 0; c < count; ++c) {
        const short value = cut(static_cast<short>(9 * in[c] - nine[c]), limit);
        sum += value;
        within += isInside(value, limit);
    }
    return {sum, within};
}

ClippedSum sumDownFast(const short* in, const short* nine, int limit, int count)
{
    return sumDownLoop(in, nine, static_cast<short>(limit), count);
}

VELMO_CLONES void slideLineFast(const short* __restrict entering, const short* __restrict leaving,
                                short* __restrict sums, int count)
{
    for (int c = 0; c < count; ++c)
        sums[c] = static_cast<short>(sums[c] + entering[c] - leaving[c]);
}

VELMO_CLONES void subtractStripesFast(short* __restrict line, const short* __restrict columns, short row,
                                      int count)
{
    for (int c = 0; c < count; ++c)
        line[c] = static_cast<short>(line[c] - columns[c] - row);
}

/// What flows between pixels of a line a step apart.
VELMO_CLONES void flowLoop(const short* __restrict from, const short* __restrict to, Gate gate, short slope,
                           short* __restrict flow, short* __restrict open, int count)
{
    for (int c = 0; c < count; ++c) {
        const auto difference = static_cast<short>(to[c] - from[c]);
        const short opened = opening(sizeOf(difference), gate, slope);
        flow[c] = static_cast<short>(opened * difference);
        open[c] = opened;
    }
}

/// The same where slopes are smoothed, too.
VELMO_CLONES void flowOnSlopes(const short* __restrict before, const short* __restrict from,
                               const short* __restrict to, const short* __restrict after, short bend,
                               Gate gate, short slope, short* __restrict flow, short* __restrict open,
                               int count)
{
    for (int c = 0; c < count; ++c) {
        const short opened = opening(stepOf(before[c], from[c], to[c], after[c], bend), gate, slope);
        flow[c] = static_cast<short>(opened * static_cast<short>(to[c] - from[c]));
        open[c] = opened;
    }
}

/// The pixels of a line after what flows in from both sides, and how open both gates are.
VELMO_CLONES void mixLoop(const short* __restrict in, const short* __restrict flow,
                          const short* __restrict gates, int step, short* __restrict out,
                          short* __restrict open, int count)
{
    const short *before = flow - step, *gatesBefore = gates - step;
    for (int c = 0; c < count; ++c) {
        out[c] = static_cast<short>(in[c] + (static_cast<short>(flow[c] - before[c] + 128) >> 8));
        open[c] = static_cast<short>(gates[c] + gatesBefore[c]);
    }
}

/// A pixel that has been smoothed across takes what flows from above, and to below. What its four gates let
/// through is added up.
VELMO_INLINE void finishPixel(short opened, short across, short below, short flowBefore, short openBefore,
                              short& picture, short& flow, short& gate, short& open, short& detail)
{
    const auto after = static_cast<short>(opened * static_cast<short>(below - across));
    const auto smooth = static_cast<short>(across + (static_cast<short>(after - flowBefore + 128) >> 8));
    flow = after;
    gate = opened;
    detail = static_cast<short>(picture - smooth);
    picture = smooth;
    open = static_cast<short>(open + openBefore + opened);
}

/// What the smoothing takes off a line, and the line smoothed; how open its four gates are. What flows to the
/// line below, and its gates, take the place of those from the line above.
VELMO_CLONES void finishOctaveLine(short* __restrict picture, const short* __restrict across,
                                   const short* __restrict below, Gate gate, short slope,
                                   const short* __restrict flowBefore, const short* __restrict openBefore,
                                   short* __restrict flow, short* __restrict gates, short* __restrict open,
                                   short* __restrict detail, int count)
{
    for (int c = 0; c < count; ++c)
        finishPixel(opening(sizeOf(static_cast<short>(below[c] - across[c])), gate, slope), across[c],
                    below[c], flowBefore[c], openBefore[c], picture[c], flow[c], gates[c], open[c],
                    detail[c]);
}

/// The same where slopes are smoothed, too.
VELMO_CLONES void finishLineOnSlopes(short* __restrict picture, const short* __restrict above,
                                     const short* __restrict across, const short* __restrict below,
                                     const short* __restrict belowIt, short bend, Gate gate, short slope,
                                     const short* __restrict flowBefore, const short* __restrict openBefore,
                                     short* __restrict flow, short* __restrict gates, short* __restrict open,
                                     short* __restrict detail, int count)
{
    for (int c = 0; c < count; ++c)
        finishPixel(opening(stepOf(above[c], across[c], below[c], belowIt[c], bend), gate, slope), across[c],
                    below[c], flowBefore[c], openBefore[c], picture[c], flow[c], gates[c], open[c],
                    detail[c]);
}

/// The same of a line that has none below it: nothing flows there, and its gates are open.
VELMO_CLONES void finishLastLine(short* __restrict picture, const short* __restrict across,
                                 const short* __restrict flowBefore, const short* __restrict openBefore,
                                 short* __restrict open, short* __restrict detail, int count)
{
    for (int c = 0; c < count; ++c) {
        const auto smooth = static_cast<short>(across[c] + (static_cast<short>(128 - flowBefore[c]) >> 8));
        detail[c] = static_cast<short>(picture[c] - smooth);
        picture[c] = smooth;
        open[c] = static_cast<short>(open[c] + openBefore[c] + 64);
    }
}

VELMO_CLONES void sumFiveOpen(const short* __restrict a, const short* __restrict b, const short* __restrict m,
                              const short* __restrict d, const short* __restrict e, short* __restrict sums,
                              int count)
{
    for (int c = 0; c < count; ++c)
        sums[c] = static_cast<short>(a[c] + b[c] + m[c] + d[c] + e[c]);
}

/// @param kept  of what was removed before: all bits, or none
VELMO_CLONES void removeLoop(const short* __restrict sums, int spacing, const short* __restrict detail,
                             short kept, short* __restrict removed, int count)
{
    const short* a = sums - 2 * std::ptrdiff_t{spacing};
    const short* b = sums - spacing;
    const short* d = sums + spacing;
    const short* e = sums + 2 * std::ptrdiff_t{spacing};
    for (int c = 0; c < count; ++c) {
        const auto sum = static_cast<short>(a[c] + b[c] + sums[c] + d[c] + e[c]);
        removed[c] = static_cast<short>((removed[c] & kept) + takenOff(detail[c], flatness(sum)));
    }
}

/// Lines of which only the last few are needed.
class Ring
{
public:
    Ring(Lanes& memory, int depth, int columns) : m_oLines(memory), m_s32Depth(depth)
    {
        if (memory.rows < depth || memory.columns != columns)
            memory.create(depth, columns);
    }
    short* operator[](int row) { return m_oLines[row % m_s32Depth]; }

private:
    Lanes& m_oLines;
    int m_s32Depth;
};

/// One octave at work, line by line: lines are smoothed across, `step` lines later (twice as many where
/// slopes are smoothed) down, and `2 * spacing` lines later it is known how flat it is around them. Few lines
/// are in use at a time, so that they stay in the cache.
class OctaveWork
{
public:
    OctaveWork(Lanes& picture, const Octave& octave, Lanes& removed, std::vector<Lanes>& rings)
        : m_oPicture(picture), m_oOctave(octave), m_oRemoved(removed), m_s32Columns(picture.columns),
          m_s32Delay(octave.bend > 0 ? 2 * octave.step : octave.step), m_s32Reach(2 * octave.spacing),
          m_oAcross(rings[0], m_s32Delay + octave.step + 1, picture.columns),
          m_oFlow(rings[1], octave.step + 1, picture.columns),
          m_oGates(rings[2], octave.step + 1, picture.columns),
          m_oOpen(rings[3], m_s32Delay + 1 + 2 * m_s32Reach + 1, picture.columns),
          m_oDetail(rings[4], m_s32Reach + 1, picture.columns), m_oLines(rings[5], 4, picture.columns)
    {}

    void run()
    {
        const int rows = m_oPicture.rows;
        std::fill_n(m_oLines[2], m_s32Columns, short{0});
        std::fill_n(m_oLines[3], m_s32Columns, short{64});
        for (int r = 0; r < rows + m_s32Delay + m_s32Reach; ++r) {
            if (r < rows)
                across(r);
            if (r >= m_s32Delay && r - m_s32Delay < rows)
                down(r - m_s32Delay);
            if (r >= m_s32Delay + m_s32Reach)
                remove(r - m_s32Delay - m_s32Reach);
        }
    }

private:
    /// Beyond the border nothing flows, and gates are open.
    void across(int r)
    {
        const int step = std::min(m_oOctave.step, m_s32Columns), between = m_s32Columns - step;
        short *flow = m_oLines[0], *gates = m_oLines[1], *picture = m_oPicture[r];
        std::fill_n(flow - step, step, short{0});
        std::fill_n(gates - step, step, short{64});
        const short slope = slopeOf(m_oOctave.across);
        if (m_oOctave.bend > 0) {
            std::fill_n(picture - step, step, picture[0]);
            std::fill_n(picture + m_s32Columns, step, picture[m_s32Columns - 1]);
            flowOnSlopes(picture - step, picture, picture + step, picture + 2 * std::ptrdiff_t{step},
                         m_oOctave.bend, m_oOctave.across, slope, flow, gates, between);
        } else {
            flowLoop(picture, picture + step, m_oOctave.across, slope, flow, gates, between);
        }
        std::fill_n(flow + between, step, short{0});
        std::fill_n(gates + between, step, short{64});
        mixLoop(picture, flow, gates, step, m_oAcross[r], m_oOpen[r], m_s32Columns);
    }

    void down(int r)
    {
        const int step = m_oOctave.step;
        const short *flow = r < step ? m_oLines[2] : m_oFlow[r - step],
                    *gates = r < step ? m_oLines[3] : m_oGates[r - step], *line = m_oAcross[r];
        if (r + step >= m_oPicture.rows)
            return finishLastLine(m_oPicture[r], line, flow, gates, m_oOpen[r], m_oDetail[r], m_s32Columns);
        const short *below = m_oAcross[r + step], slope = slopeOf(m_oOctave.down);
        if (m_oOctave.bend == 0)
            return finishOctaveLine(m_oPicture[r], line, below, m_oOctave.down, slope, flow, gates,
                                    m_oFlow[r], m_oGates[r], m_oOpen[r], m_oDetail[r], m_s32Columns);
        finishLineOnSlopes(m_oPicture[r], m_oAcross[std::max(0, r - step)], line, below,
                           m_oAcross[std::min(m_oPicture.rows - 1, r + 2 * step)], m_oOctave.bend,
                           m_oOctave.down, slope, flow, gates, m_oFlow[r], m_oGates[r], m_oOpen[r],
                           m_oDetail[r], m_s32Columns);
    }

    void remove(int r)
    {
        const auto openOf = [&](int offset) {
            return m_oOpen[std::clamp(r + offset * m_oOctave.spacing, 0, m_oPicture.rows - 1)];
        };
        short* sums = m_oLines[0];
        sumFiveOpen(openOf(-2), openOf(-1), openOf(0), openOf(1), openOf(2), sums, m_s32Columns);
        std::fill_n(sums - m_s32Reach, m_s32Reach, sums[0]);
        std::fill_n(sums + m_s32Columns, m_s32Reach, sums[m_s32Columns - 1]);
        removeLoop(sums, m_oOctave.spacing, m_oDetail[r], m_oOctave.isFirst ? short{0} : short{-1},
                   m_oRemoved[r], m_s32Columns);
    }

    Lanes& m_oPicture;
    const Octave& m_oOctave;
    Lanes& m_oRemoved;
    int m_s32Columns;
    int m_s32Delay, m_s32Reach;
    Ring m_oAcross, m_oFlow, m_oGates, m_oOpen, m_oDetail, m_oLines;
};

void smoothOctaveFast(Lanes& picture, const Octave& octave, Lanes& removed, std::vector<Lanes>& rings)
{
    rings.resize(6);
    OctaveWork(picture, octave, removed, rings).run();
}

VELMO_CLONES void finishLineLoop(const float* __restrict estimate, const short* __restrict removed,
                                 const float* __restrict columns, float row, float unit, float level,
                                 u16* __restrict out, int count)
{
    for (int c = 0; c < count; ++c) {
        const float stripe = columns[c] + row;
        const float value = (estimate[c] - stripe) - static_cast<float>(removed[c]) * unit;
        out[c] = static_cast<u16>(static_cast<int>(clamped(value + level, 0, 65535) + 0.5F));
    }
}

void finishLineFast(const float* estimate, const short* removed, const Finish& finish, u16* out, int count)
{
    finishLineLoop(estimate, removed, finish.columns, finish.row, finish.unit, finish.level, out, count);
}

} // namespace

constexpr Forms<SumDifferences> sumDifferences{"denoise: differences", sumDifferencesPlain,
                                               sumDifferencesFast};
constexpr Forms<TakeResidual> takeResidual{"denoise: residual", takeResidualPlain, takeResidualFast};
constexpr Forms<Halve> halve{"denoise: halve", halvePlain, halveFast};
constexpr Forms<HalveComparison> halveComparison{"denoise: halves", halveComparisonPlain,
                                                 halveComparisonFast};
constexpr Forms<MixLines> mixLines{"denoise: mix", mixLinesPlain, mixLinesFast};
constexpr Forms<SumGradients> sumGradients{"denoise: gradients", sumGradientsPlain, sumGradientsFast};
constexpr Forms<TakeRest> takeRest{"denoise: rest", takeRestPlain, takeRestFast};
constexpr Forms<SumLine> sumLine{"denoise: sum", sumLinePlain, sumLineFast};
constexpr Forms<SumGains> sumGains{"denoise: gains", sumGainsPlain, sumGainsFast};
constexpr Forms<ExplainByShift> explainByShift{"denoise: shift", explainByShiftPlain, explainByShiftFast};
constexpr Forms<SumOfFive> sumOfFive{"denoise: five lines", sumOfFivePlain, sumOfFiveFast};
constexpr Forms<UpdateLine> updateLine{"denoise: update", updateLinePlain, updateLineFast};
constexpr Forms<SplitAcross> splitAcross{"denoise: split across", splitAcrossPlain, splitAcrossFast};
constexpr Forms<SplitDown> splitDown{"denoise: split down", splitDownPlain, splitDownFast};
constexpr Forms<ToLanes> toLanes{"denoise: lanes", toLanesPlain, toLanesFast};
constexpr Forms<SumAcross> sumAcross{"denoise: sum across", sumAcrossPlain, sumAcrossFast};
constexpr Forms<SumDown> sumDown{"denoise: sum down", sumDownPlain, sumDownFast};
constexpr Forms<SlideLine> slideLine{"denoise: slide", slideLinePlain, slideLineFast};
constexpr Forms<SubtractStripes> subtractStripes{"denoise: stripes", subtractStripesPlain,
                                                 subtractStripesFast};
constexpr Forms<SmoothOctave> smoothOctave{"denoise: octave", smoothOctavePlain, smoothOctaveFast};
constexpr Forms<FinishLine> finishLine{"denoise: finish", finishLinePlain, finishLineFast};

} // namespace velmo::camera

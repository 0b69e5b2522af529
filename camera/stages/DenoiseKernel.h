// Not installed.
#pragma once

#include "core/Forms.h"

#include <cstdint>
#include <vector>

/// The loops of camera/stages/Denoiser.h, each over one line of a frame unless it says otherwise.

namespace velmo::camera {

using exp::Forms;
using u16 = std::uint16_t;

/// A new frame and the estimate that it is compared with.
struct Comparison
{
    const u16* frame;
    const float* estimate;
    float level; ///< of the frame, above that of the estimate
};

/// A sum of values cut to a limit, and how many of them did not need it.
struct ClippedSum
{
    int sum = 0;
    int inside = 0;
};

/// Values between -60 and 60: `(frame - estimate - level) * scale`, rounded, the outer ones cut to that
/// limit. Adds them up over the line, and to the sums of each column.
constexpr int s32LineClip = 60;
using SumDifferences = ClippedSum(const Comparison& of, float scale, int* sums, int* inside, int count);
SumDifferences sumDifferencesPlain;
extern const Forms<SumDifferences> sumDifferences;

/// A stripe is taken off a frame, and a share of it goes into the estimate.
struct Stripes
{
    const float* columns; ///< of each column
    float row;
    float share;
};

/// What is left of the difference: exact, and in fifths of its deviation, whole numbers between -35 and 35.
/// @param estimate  with the share of the stripes
constexpr int s32ResidualClip = 35;
constexpr int s32ResidualUnit = 5;
using TakeResidual = void(const Comparison& of, const Stripes& stripes, float scale, float* estimate,
                          float* residual, short* coarse, int count);
TakeResidual takeResidualPlain;
extern const Forms<TakeResidual> takeResidual;

/// The means of two by two pixels, `count` of them.
using Halve = void(const float* upper, const float* lower, float* out, int count);
Halve halvePlain;
extern const Forms<Halve> halve;

/// The means of two by two pixels of an estimate, `count` of them, and what those of a frame differ by.
/// @param frame, estimate  an upper and a lower line
using HalveComparison = void(const u16* const (&frame)[2], const float* const (&estimate)[2], float* halved,
                             float* residual, int count);
HalveComparison halveComparisonPlain;
extern const Forms<HalveComparison> halveComparison;

/// ((a0 w0 + a1 w1) + (a2 w2 + a3 w3)) of four lines, or of one at four places.
using MixLines = void(const float* const* lines, const float* weights, float* out, int count);
MixLines mixLinesPlain;
extern const Forms<MixLines> mixLines;

/// Lines of a part of two pictures: `every` so many of `rows` lines, `count` pixels each.
struct Part
{
    std::ptrdiff_t stride; ///< between the lines of both pictures
    int rows, every, count;
};

/// Products of the gradient (x, y) of the estimate and the residual r, less its level, each in eight sums:
/// column c counts in number c % 8 of them. The pixels around the part are read as well, and up to seven more
/// behind its lines, which do not count.
struct GradientSums
{
    float xx[8] = {}, xy[8] = {}, yy[8] = {}, xr[8] = {}, yr[8] = {}, rr[8] = {};
};
using SumGradients = void(const float* estimate, const float* residual, float level, float scale,
                          const Part& part, GradientSums& sums);
SumGradients sumGradientsPlain;
extern const Forms<SumGradients> sumGradients;

/// What a frame differs by from an estimate that moved: `(estimate + residual) - moved`.
using TakeRest = void(const float* estimate, const float* residual, const float* moved, float* rest,
                      int count);
TakeRest takeRestPlain;
extern const Forms<TakeRest> takeRest;

/// Adds up a line, in the same eight sums.
using SumLine = void(const float* values, float* sums, int count);
SumLine sumLinePlain;
extern const Forms<SumLine> sumLine;

/// What the frame differs by from the estimate, and by how much less when that moved.
struct Gain
{
    const float *estimate, *residual, *moved, *rest;
    float residualLevel, restLevel;
    float sideX,
        sideY; ///< weights of the pixels around, with which the estimate is as smooth as the moved one
};
/// Squares of the differences before and after, and of what the estimate itself changed, in the same eight
/// sums.
struct GainSums
{
    float before[8] = {}, after[8] = {}, moves[8] = {};
};
using SumGains = void(const Gain& of, const Part& part, GainSums& sums);
SumGains sumGainsPlain;
extern const Forms<SumGains> sumGains;

/// How much of a pixel's residual a shift of the scene explains: p / (p + variance) with the square p of the
/// product of shift and gradient, or `least` if that is more. The pixel left and right of each is read too.
struct Shift
{
    float x, y, variance, least;
};
using ExplainByShift = void(const float* above, const float* row, const float* below, const Shift& shift,
                            float* explained, int count);
ExplainByShift explainByShiftPlain;
extern const Forms<ExplainByShift> explainByShift;

/// Sums of five coarse residuals above each other, and of their squares.
using SumOfFive = void(const short* const* rows, short* sums, short* squares, int count);
SumOfFive sumOfFivePlain;
extern const Forms<SumOfFive> sumOfFive;

/// One line of what changes from frame to frame.
struct Update
{
    const short* sums; ///< of `sumOfFive`; the two left and right of the line are read as well
    const short* squares;
    const float* explained; ///< least share of the change that is none of noise
    float deviation;        ///< of the residual
    float leastGain;
};
/// Moves the estimate towards the frame: `estimate` and `age` are changed. Returns the sum over the pixels of
/// how sure it is that they changed, in 256ths.
using UpdateLine = int(const u16* frame, const Stripes& stripes, float level, const Update& update,
                       float* estimate, float* age, int count);
UpdateLine updateLinePlain;
extern const Forms<UpdateLine> updateLine;

/// Smooths by [1 2 1] / 4 of pixels `step` apart, and gives what is left. `step` pixels left and right of the
/// line are read as well.
using SplitAcross = void(const float* in, int step, float* low, float* high, int count);
SplitAcross splitAcrossPlain;
extern const Forms<SplitAcross> splitAcross;

/// The same of lines above each other; adds the square of what is left to `squares`, and writes what is
/// smooth unless `low` is null.
using SplitDown = void(const float* above, const float* row, const float* below, float* low, float* squares,
                       int count);
SplitDown splitDownPlain;
extern const Forms<SplitDown> splitDown;

/// The estimate in whole numbers, modulo 2^16: `(estimate - base) * scale`, rounded.
using ToLanes = void(const float* estimate, float base, float scale, short* out, int count);
ToLanes toLanesPlain;
extern const Forms<ToLanes> toLanes;

/// Nine times the difference of each pixel from the mean of the nine around it on its line, cut to a limit:
/// adds them to the sums of the columns. Four pixels left and right of the line are read as well.
using SumAcross = void(const short* in, int limit, int* sums, int* inside, int count);
SumAcross sumAcrossPlain;
extern const Forms<SumAcross> sumAcross;

/// The same against a mean along the columns: `nine` holds the sums of nine lines. Adds up the line.
using SumDown = ClippedSum(const short* in, const short* nine, int limit, int count);
SumDown sumDownPlain;
extern const Forms<SumDown> sumDown;

/// sums += entering - leaving
using SlideLine = void(const short* entering, const short* leaving, short* sums, int count);
SlideLine slideLinePlain;
extern const Forms<SlideLine> slideLine;

/// Takes stripes off a line: `row` and one for each column.
using SubtractStripes = void(short* line, const short* columns, short row, int count);
SubtractStripes subtractStripesPlain;
extern const Forms<SubtractStripes> subtractStripes;

/// A picture in 16-bit lanes: rows of `stride` with `s32Margin` elements before and behind them. Each row
/// begins where the cache's lines do, so that few vectors lie across two of them.
struct Lanes
{
    static constexpr int s32Margin = 32;

    std::vector<short> values;
    int rows = 0, columns = 0, stride = 0;
    std::ptrdiff_t first = 0;

    void create(int newRows, int newColumns)
    {
        constexpr int line = 64 / sizeof(short);
        rows = newRows, columns = newColumns, stride = (newColumns + line - 1) / line * line + 2 * s32Margin;
        values.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(stride) + line, 0);
        const auto beyond = reinterpret_cast<std::uintptr_t>(values.data()) / sizeof(short) % line;
        first = s32Margin + (line - static_cast<std::ptrdiff_t>(beyond)) % line;
    }
    short* operator[](int row) { return values.data() + std::ptrdiff_t{row} * stride + first; }
    const short* operator[](int row) const { return values.data() + std::ptrdiff_t{row} * stride + first; }
};

/// Between neighbours that differ by up to `lower` a smoothing flows freely, from `upper` on not at all.
struct Gate
{
    short lower, upper;
};

/// How one octave is smoothed.
struct Octave
{
    int step;    ///< between the pixels that are smoothed with each other
    int spacing; ///< between the five by five that tell whether a place is flat
    Gate across, down;
    short bend;   ///< so many quarters of how a slope bends count as its steps; 0: they count as they are
    bool isFirst; ///< what it takes away is all that was removed so far
};

/// One octave of a whole picture, in place: each pixel moves towards the mean of its neighbours `step` apart,
/// across and then down, as far as the gates let it. `removed` gains what that took away, except where most
/// gates nearby are closed: there is detail, and it stays.
/// @param rings  memory for lines that are at work
using SmoothOctave = void(Lanes& picture, const Octave& octave, Lanes& removed, std::vector<Lanes>& rings);
SmoothOctave smoothOctavePlain;
extern const Forms<SmoothOctave> smoothOctave;

/// The result: the estimate without what is noise in it, at the level of the frame.
struct Finish
{
    const float* columns; ///< stripes that stay
    float row;
    float unit; ///< of `removed`
    float level;
};
using FinishLine = void(const float* estimate, const short* removed, const Finish& finish, u16* out,
                        int count);
FinishLine finishLinePlain;
extern const Forms<FinishLine> finishLine;

} // namespace velmo::camera

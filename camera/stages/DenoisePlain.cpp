#include "camera/stages/DenoiseKernel.h"
#include "camera/stages/DenoiseLoops.h"

#include <algorithm>

namespace velmo::camera {

ClippedSum sumDifferencesPlain(const Comparison& of, float scale, int* sums, int* inside, int count)
{
    ClippedSum line;
    for (int c = 0; c < count; ++c) {
        const float difference = (static_cast<float>(of.frame[c]) - of.estimate[c]) - of.level;
        const int value = rounded(clamped(difference * scale, -s32LineClip, s32LineClip));
        const int counts = value > -s32LineClip && value < s32LineClip ? 1 : 0;
        sums[c] += value;
        inside[c] += counts;
        line.sum += value;
        line.inside += counts;
    }
    return line;
}

void takeResidualPlain(const Comparison& of, const Stripes& stripes, float scale, float* estimate,
                       float* residual, short* coarse, int count)
{
    for (int c = 0; c < count; ++c) {
        const float stripe = stripes.columns[c] + stripes.row;
        estimate[c] = of.estimate[c] + stripes.share * stripe;
        residual[c] = ((static_cast<float>(of.frame[c]) - of.level) - stripe) - estimate[c];
        coarse[c] =
            static_cast<short>(rounded(clamped(residual[c] * scale, -s32ResidualClip, s32ResidualClip)));
    }
}

void halvePlain(const float* upper, const float* lower, float* out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = meanOfFour(upper[2 * c], lower[2 * c], upper[2 * c + 1], lower[2 * c + 1]);
}

void halveComparisonPlain(const u16* const (&frame)[2], const float* const (&estimate)[2], float* halved,
                          float* residual, int count)
{
    halvePlain(estimate[0], estimate[1], halved, count);
    for (int c = 0; c < count; ++c) {
        const int sum = frame[0][2 * c] + frame[1][2 * c] + frame[0][2 * c + 1] + frame[1][2 * c + 1];
        residual[c] = static_cast<float>(sum) * 0.25F - halved[c];
    }
}

void mixLinesPlain(const float* const* lines, const float* weights, float* out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = (lines[0][c] * weights[0] + lines[1][c] * weights[1]) +
                 (lines[2][c] * weights[2] + lines[3][c] * weights[3]);
}

void sumGradientsPlain(const float* estimate, const float* residual, float level, float scale,
                       const Part& part, GradientSums& sums)
{
    for (int r = 0; r < part.rows; r += part.every)
        for (int c = 0; c < part.count; ++c) {
            const float* row = estimate + r * part.stride;
            const float *above = row - part.stride, *below = row + part.stride;
            addProducts(gradientX(above, row, below, c) * scale, gradientY(above, below, c) * scale,
                        residual[r * part.stride + c] - level, 1, sums, c % 8);
        }
}

void takeRestPlain(const float* estimate, const float* residual, const float* moved, float* rest, int count)
{
    for (int c = 0; c < count; ++c)
        rest[c] = (estimate[c] + residual[c]) - moved[c];
}

void sumLinePlain(const float* values, float* sums, int count)
{
    for (int c = 0; c < count; ++c)
        sums[c % 8] += values[c];
}

void sumGainsPlain(const Gain& of, const Part& part, GainSums& sums)
{
    for (int r = 0; r < part.rows; r += part.every)
        for (int c = 0; c < part.count; ++c)
            addSquares(of, part.stride, r * part.stride + c, 1, sums, c % 8);
}

void explainByShiftPlain(const float* above, const float* row, const float* below, const Shift& shift,
                         float* explained, int count)
{
    for (int c = 0; c < count; ++c)
        explained[c] = explainedShare(shift, gradientX(above, row, below, c), gradientY(above, below, c));
}

void sumOfFivePlain(const short* const* rows, short* sums, short* squares, int count)
{
    for (int c = 0; c < count; ++c) {
        int sum = 0, square = 0;
        for (int r = 0; r < 5; ++r) {
            sum += rows[r][c];
            square += rows[r][c] * rows[r][c];
        }
        sums[c] = static_cast<short>(sum);
        squares[c] = static_cast<short>(square);
    }
}

int updateLinePlain(const u16* frame, const Stripes& stripes, float level, const Update& update,
                    float* estimate, float* age, int count)
{
    int changed = 0;
    for (int c = 0; c < count; ++c) {
        int sum = 0, square = 0;
        for (int d = -2; d <= 2; ++d) {
            sum += update.sums[c + d];
            square += update.squares[c + d];
        }
        const float stripe = stripes.columns[c] + stripes.row;
        const float before = estimate[c] + stripes.share * stripe;
        const float residual = ((static_cast<float>(frame[c]) - level) - stripe) - before;
        changed += updatePixel(residual, before, static_cast<float>(sum), static_cast<float>(square),
                               update.explained[c], update, estimate[c], age[c]);
    }
    return changed;
}

void splitAcrossPlain(const float* in, int step, float* low, float* high, int count)
{
    for (int c = 0; c < count; ++c) {
        low[c] = (in[c - step] + in[c + step]) * 0.25F + in[c] * 0.5F;
        high[c] = in[c] - low[c];
    }
}

void splitDownPlain(const float* above, const float* row, const float* below, float* low, float* squares,
                    int count)
{
    for (int c = 0; c < count; ++c) {
        const float smooth = (above[c] + below[c]) * 0.25F + row[c] * 0.5F;
        const float rest = row[c] - smooth;
        squares[c] += rest * rest;
        if (low != nullptr)
            low[c] = smooth;
    }
}

void toLanesPlain(const float* estimate, float base, float scale, short* out, int count)
{
    for (int c = 0; c < count; ++c)
        out[c] = static_cast<short>(static_cast<int>((estimate[c] - base) * scale));
}

void sumAcrossPlain(const short* in, int limit, int* sums, int* inside, int count)
{
    for (int c = 0; c < count; ++c) {
        int nine = 0;
        for (int d = -4; d <= 4; ++d)
            nine += in[c + d];
        const int value = std::clamp<int>(static_cast<short>(9 * in[c] - nine), -limit, limit);
        sums[c] += value;
        inside[c] += std::abs(value) < limit ? 1 : 0;
    }
}

ClippedSum sumDownPlain(const short* in, const short* nine, int limit, int count)
{
    ClippedSum line;
    for (int c = 0; c < count; ++c) {
        const int value = std::clamp<int>(static_cast<short>(9 * in[c] - nine[c]), -limit, limit);
        line.sum += value;
        line.inside += std::abs(value) < limit ? 1 : 0;
    }
    return line;
}

void slideLinePlain(const short* entering, const short* leaving, short* sums, int count)
{
    for (int c = 0; c < count; ++c)
        sums[c] = static_cast<short>(sums[c] + entering[c] - leaving[c]);
}

void subtractStripesPlain(short* line, const short* columns, short row, int count)
{
    for (int c = 0; c < count; ++c)
        line[c] = static_cast<short>(line[c] - columns[c] - row);
}

namespace {

/// What flows into a pixel from its neighbour, in 64ths. Beyond the border there is nothing, and all is open.
struct Flow
{
    short amount = 0;
    short open = 64;
};

/// Between a pixel and the one `down` and `across` from it. The picture's border goes on beyond it.
Flow flowBetween(const Lanes& picture, int row, int column, int down, int across, Gate gate, short bend)
{
    if (row + down < 0 || column + across < 0 || row + down >= picture.rows ||
        column + across >= picture.columns)
        return {};
    const auto at = [&](int steps) {
        return picture[std::clamp(row + steps * down, 0, picture.rows - 1)]
                      [std::clamp(column + steps * across, 0, picture.columns - 1)];
    };
    const auto difference = static_cast<short>(at(1) - at(0));
    const short step = bend > 0 ? stepOf(at(-1), at(0), at(1), at(2), bend) : sizeOf(difference);
    const short open = opening(step, gate, slopeOf(gate));
    return {static_cast<short>(open * difference), open};
}

/// Along one direction; adds to `open` how far the two gates of each pixel are open.
Lanes smoothed(const Lanes& picture, int down, int across, Gate gate, short bend, Lanes& open)
{
    Lanes out = picture;
    for (int r = 0; r < picture.rows; ++r)
        for (int c = 0; c < picture.columns; ++c) {
            const Flow before = flowBetween(picture, r, c, -down, -across, gate, bend);
            const Flow after = flowBetween(picture, r, c, down, across, gate, bend);
            out[r][c] = static_cast<short>(picture[r][c] + ((after.amount + before.amount + 128) >> 8));
            open[r][c] = static_cast<short>(open[r][c] + before.open + after.open);
        }
    return out;
}

} // namespace

void smoothOctavePlain(Lanes& picture, const Octave& octave, Lanes& removed, std::vector<Lanes>& rings)
{
    rings.resize(0);
    Lanes open;
    open.create(picture.rows, picture.columns);
    const Lanes across = smoothed(picture, 0, octave.step, octave.across, octave.bend, open);
    const Lanes smooth = smoothed(across, octave.step, 0, octave.down, octave.bend, open);
    for (int r = 0; r < picture.rows; ++r)
        for (int c = 0; c < picture.columns; ++c) {
            int sum = 0;
            for (int i = -2; i <= 2; ++i)
                for (int j = -2; j <= 2; ++j)
                    sum += open[std::clamp(r + i * octave.spacing, 0, picture.rows - 1)]
                               [std::clamp(c + j * octave.spacing, 0, picture.columns - 1)];
            const auto detail = static_cast<short>(picture[r][c] - smooth[r][c]);
            const short before = octave.isFirst ? short{0} : removed[r][c];
            removed[r][c] = static_cast<short>(before + takenOff(detail, flatness(static_cast<short>(sum))));
        }
    picture = smooth;
}

void finishLinePlain(const float* estimate, const short* removed, const Finish& finish, u16* out, int count)
{
    for (int c = 0; c < count; ++c) {
        const float stripe = finish.columns[c] + finish.row;
        const float value = (estimate[c] - stripe) - static_cast<float>(removed[c]) * finish.unit;
        out[c] = static_cast<u16>(static_cast<int>(clamped(value + finish.level, 0, 65535) + 0.5F));
    }
}

} // namespace velmo::camera

#include "camera/stages/Denoiser.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace velmo::camera {
namespace {

constexpr int s32LeastSize = 16;
constexpr int s32Block = 8;
constexpr int s32Blocks = 480; ///< so many, in rows, stand for all
constexpr int s32Part = 64;    ///< so many pixels tell how high a quarter of a line is
constexpr float fLeastDeviation = 0.15F;
constexpr float fNormal = 1.4826F;               ///< deviation over the median absolute one
constexpr float fMeanAbsolute = 1.2533F * 1.05F; ///< over the mean one, of the calmer blocks
constexpr float fLaneUnits = 32;                 ///< to the noise
constexpr int s32LineMargin = 8;                 ///< of floats on both sides of a line

/// The value below which a share lies; the order of the values is lost.
template <class Values>
float quantile(Values& values, double share)
{
    const auto at = values.begin() +
                    static_cast<std::ptrdiff_t>(std::lround(share * static_cast<double>(values.size() - 1)));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/// From a median on, which what moves has shifted, towards the mean of what is within `reach` of it.
float centred(const std::vector<float>& values, float centre, float reach)
{
    for (int i = 0; i < 4; ++i) {
        constexpr std::size_t nLanes = 8; // sums of their own, so that none waits for another
        float sums[nLanes] = {}, counts[nLanes] = {};
        for (std::size_t at = 0; at + nLanes <= values.size(); at += nLanes)
            for (std::size_t lane = 0; lane < nLanes; ++lane) {
                const float away = values[at + lane] - centre;
                const float counted = std::abs(away) < reach ? 1.0F : 0.0F;
                sums[lane] += counted * away;
                counts[lane] += counted;
            }
        const float inside = std::accumulate(counts, counts + nLanes, 0.0F);
        if (inside < 0.25F * static_cast<float>(values.size())) // another scene
            return centre;
        centre += std::accumulate(sums, sums + nLanes, 0.0F) / inside;
    }
    return centre;
}

float towards(float from, float to, float share)
{
    return from + share * (to - from);
}

float square(float value)
{
    return value * value;
}

/// Beyond a border the picture comes back.
int mirrored(int index, int count)
{
    index = index < 0 ? -1 - index : index;
    return index < count ? index : 2 * count - 1 - index;
}

template <class T>
void mirrorEnds(T* line, int count, int margin)
{
    for (int i = 1; i <= margin; ++i) {
        line[-i] = line[mirrored(-i, count)];
        line[count - 1 + i] = line[mirrored(count - 1 + i, count)];
    }
}

/// Every line less the mean of those up to `reach` before and after it.
void takeOffSmooth(std::vector<float>& line, int reach, std::vector<float>& memory)
{
    const int count = static_cast<int>(line.size());
    memory = line;
    double sum = 0;
    int first = 0, next = 0;
    for (int i = 0; i < count; ++i) {
        while (next < std::min(count, i + reach + 1))
            sum += memory[static_cast<std::size_t>(next++)];
        while (first < i - reach)
            sum -= memory[static_cast<std::size_t>(first++)];
        line[static_cast<std::size_t>(i)] -= static_cast<float>(sum / (next - first));
    }
}

int everyBlockRow(int rows, int columns)
{
    return std::max(1, rows / s32Block * (columns / s32Block) / s32Blocks);
}

} // namespace

void Denoiser::Segments::clear(std::size_t lines)
{
    for (int s = 0; s < s32Count; ++s) {
        sums[s].assign(lines, 0);
        inside[s].assign(lines, 0);
    }
    pixels = {};
}

void Denoiser::Segments::average(float unit, int reach, Line& segment)
{
    constexpr float fCount = s32Count;
    const std::size_t lines = sums[0].size();
    means.assign(lines, 0);
    doubts.assign(lines, 0);
    for (int s = 0; s < s32Count; ++s) {
        // With most of it beyond the limit a line is not known any better.
        const float least = 0.5F * static_cast<float>(pixels[s]);
        segment.resize(lines);
        for (std::size_t i = 0; i < lines; ++i)
            segment[i] = static_cast<float>(sums[s][i]) * unit /
                         std::max({static_cast<float>(inside[s][i]), least, 1.0F});
        if (reach > 0)
            takeOffSmooth(segment, reach, copy);
        for (std::size_t i = 0; i < lines; ++i) {
            means[i] += segment[i];
            doubts[i] += square(segment[i]);
        }
    }
    float agreement = 0, doubt = 0;
    for (std::size_t i = 0; i < lines; ++i) {
        agreement += (square(means[i]) - doubts[i]) / (fCount * (fCount - 1));
        means[i] /= fCount;
        doubts[i] = std::max(0.0F, doubts[i] / fCount - square(means[i])) / (fCount - 1);
        doubt += doubts[i];
    }
    common = std::max(0.0F, agreement / static_cast<float>(lines));
    // Four values are few for a variance: none is taken for better than the mean one.
    for (float& value : doubts)
        value = std::max(value, doubt / static_cast<float>(lines));
}

Denoiser::Denoiser(DenoiseStrength strength) : m_oStrength(strength) {}

void Denoiser::process(const Frame& in, Frame& out)
{
    if (in.rows < s32LeastSize || in.cols < s32LeastSize) {
        if (out.data != in.data)
            in.copyTo(out);
        return;
    }
    if (m_oLast.renew(in)) {
        const Frame& frame = m_oLast.frame(); // `out` may be `in`
        if (frame.rows != m_s32Rows || frame.cols != m_s32Columns)
            start(frame);
        else
            follow(frame);
        findNoise();
        findFixedStripes();
        smooth();
        ++m_s32Frames;
    }
    finish(out);
}

void Denoiser::start(const Frame& frame)
{
    m_s32Rows = frame.rows;
    m_s32Columns = frame.cols;
    m_s32Frames = 0;
    const auto pixels = static_cast<std::size_t>(frame.total());
    m_vecEstimate.resize(pixels);
    for (int r = 0; r < m_s32Rows; ++r)
        std::copy_n(frame[r], m_s32Columns, estimate(r));
    m_vecAge.assign(pixels, 1);
    m_fBase = frame(m_s32Rows / 2, m_s32Columns / 2);
    m_fLevel = m_fDeviation = m_fNoise = 0;
    m_fRatio = m_fChanged = 1;
    m_fShiftX = m_fShiftY = m_fCut = 0;
    m_vecColumns.assign(static_cast<std::size_t>(m_s32Columns), 0);
    m_vecRows.assign(static_cast<std::size_t>(m_s32Rows), 0);
    m_vecFixedColumns = m_vecColumns;
    m_vecFixedRows = m_vecRows;
    m_vecFixedLanes.assign(m_vecColumns.size(), 0);
    m_oPicture.create(m_s32Rows, m_s32Columns);
    m_oCoarse.create(m_s32Rows, m_s32Columns);
    m_oSums.create(2, m_s32Columns);
    m_vecHalfEstimate.assign(
        static_cast<std::size_t>(m_s32Rows / 2) * static_cast<std::size_t>(m_s32Columns / 2 + 2), 0);
    m_vecHalfResidual = m_vecHalfEstimate;
}

void Denoiser::follow(const Frame& frame)
{
    findLevel(frame);
    std::fill(m_vecColumns.begin(), m_vecColumns.end(), 0.0F);
    std::fill(m_vecRows.begin(), m_vecRows.end(), 0.0F);
    float deviation = deviationOf(frame);
    if (m_s32Frames > 1)
        deviation = std::min(deviation, 2 * m_fDeviation);
    findStripes(frame, std::max(0.2F, deviation));
    const float before = m_fDeviation;
    m_fDeviation = std::max(fLeastDeviation, deviationOf(frame));
    if (before > 0) // a scene that moves is no camera that got noisier
        m_fDeviation = std::min(m_fDeviation, 3 * before);
    takeResiduals(frame);
    findShift();
    update(frame);
}

void Denoiser::findLevel(const Frame& frame)
{
    // A few thousand pixels, in every row and, as the first of a row moves, every column.
    constexpr int s32Pixels = 4096;
    const int step = std::max(1, m_s32Rows * m_s32Columns / s32Pixels);
    m_vecSorted.clear();
    for (int r = 0; r < m_s32Rows; ++r)
        for (int c = r * 29 % step; c < m_s32Columns; c += step)
            m_vecSorted.push_back(static_cast<float>(frame[r][c]) - estimate(r)[c]);
    m_fLevel = quantile(m_vecSorted, 0.5);
    if (m_s32Frames > 1)
        m_fLevel = centred(m_vecSorted, m_fLevel, 2 * m_fDeviation);
}

/// Of frame and estimate, where they differ least: the stripes of this frame and its level taken off.
float Denoiser::deviationOf(const Frame& frame)
{
    const int across = m_s32Columns / s32Block, every = everyBlockRow(m_s32Rows, m_s32Columns);
    m_vecSorted.clear();
    for (int top = 0; top + s32Block <= m_s32Rows; top += every * s32Block) {
        m_vecSegment.assign(static_cast<std::size_t>(m_s32Columns), 0);
        for (int r = top; r < top + s32Block; ++r) {
            const u16* in = frame[r];
            const float *from = estimate(r), *columns = m_vecColumns.data();
            const float row = m_vecRows[static_cast<std::size_t>(r)], share = 1 + m_fStripeShare;
            float* sums = m_vecSegment.data();
            for (int c = 0; c < m_s32Columns; ++c)
                sums[c] +=
                    std::abs(static_cast<float>(in[c]) - m_fLevel - share * (columns[c] + row) - from[c]);
        }
        for (int b = 0; b < across; ++b) {
            float sum = 0;
            for (int c = b * s32Block; c < (b + 1) * s32Block; ++c)
                sum += m_vecSegment[static_cast<std::size_t>(c)];
            m_vecSorted.push_back(sum / (s32Block * s32Block));
        }
    }
    return fMeanAbsolute * quantile(m_vecSorted, 0.4);
}

void Denoiser::findStripes(const Frame& frame, float deviation)
{
    const float unit = 2.5F * deviation / s32LineClip;
    constexpr int count = Segments::s32Count;
    m_oSegments.clear(m_vecColumns.size());
    m_oRowSegments.clear(m_vecRows.size());
    std::int64_t sum = 0, inside = 0;
    for (int r = 0; r < m_s32Rows; ++r) {
        const int down = std::min(count - 1, r * count / m_s32Rows);
        ++m_oSegments.pixels[down];
        for (int s = 0; s < count; ++s) {
            const int from = m_s32Columns * s / count, to = m_s32Columns * (s + 1) / count;
            const ClippedSum line = sumDifferences({frame[r] + from, estimate(r) + from, m_fLevel}, 1 / unit,
                                                   m_oSegments.sums[down].data() + from,
                                                   m_oSegments.inside[down].data() + from, to - from);
            m_oRowSegments.sums[s][static_cast<std::size_t>(r)] = line.sum;
            m_oRowSegments.inside[s][static_cast<std::size_t>(r)] = line.inside;
            m_oRowSegments.pixels[s] = to - from;
            sum += line.sum;
            inside += line.inside;
        }
    }
    // All pixels tell the level better than a few, unless many of them are beyond noise, which are cut and
    // not left out.
    const double share = static_cast<double>(inside) / static_cast<double>(frame.total());
    if (share > 0.8)
        m_fLevel += static_cast<float>(static_cast<double>(sum) / static_cast<double>(inside) *
                                       std::min(1.0, (share - 0.8) / 0.15)) *
                    unit;
    constexpr int reach = 8;
    m_oSegments.average(unit, reach, m_vecSegment);
    shrinkStripes(m_oSegments, deviation, m_vecColumns);
    m_oRowSegments.average(unit, reach, m_vecSegment);
    shrinkStripes(m_oRowSegments, deviation, m_vecRows);
    constexpr float fLeastShare = 0.02F;
    m_fStripeShare = std::max({fLeastShare, 1 / static_cast<float>(m_s32Frames + 1), m_fChanged});
}

/// As much of them as they are likely to be stripes: all lines together say how large these are.
void Denoiser::shrinkStripes(const Segments& lines, float deviation, Line& stripes)
{
    const float common = std::min(lines.common, 2 * square(deviation));
    m_vecSorted.clear();
    for (const float mean : lines.means)
        m_vecSorted.push_back(std::abs(mean));
    const float largest = 4 * fNormal * quantile(m_vecSorted, 0.5); // beyond that it is an object
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = std::abs(lines.means[i]) > largest
                         ? 0
                         : lines.means[i] * common / (common + lines.doubts[i] + 1e-9F) *
                               std::max(0.0F, 1 - m_fChanged);
}

void Denoiser::takeResiduals(const Frame& frame)
{
    const int half = m_s32Columns / 2;
    m_vecLines.resize(4 * static_cast<std::size_t>(m_s32Columns));
    for (int r = 0; r < m_s32Rows; ++r) {
        float* from = m_vecLines.data() + (r % 2) * m_s32Columns;
        float* residual = from + 2 * m_s32Columns;
        takeResidual({frame[r], estimate(r), m_fLevel}, stripesOf(r), s32ResidualUnit / m_fDeviation, from,
                     residual, m_oCoarse[r], m_s32Columns);
        mirrorEnds(m_oCoarse[r], m_s32Columns, 2);
        if (r % 2 == 0)
            continue;
        float* out = m_vecHalfEstimate.data() + std::ptrdiff_t{r / 2} * (half + 2) + 1;
        halve(from - m_s32Columns, from, out, half);
        mirrorEnds(out, half, 1);
        halve(residual - m_s32Columns, residual,
              m_vecHalfResidual.data() + std::ptrdiff_t{r / 2} * (half + 2) + 1, half);
    }
}

/// By least squares, tile by tile and of all tiles together; no tile has more than its say.
void Denoiser::findShift()
{
    constexpr int s32Tile = 16, s32LeastTile = 6, s32Lines = 120;
    constexpr float fScale = 1 / 16.0F; // of the Sobel operator, for pixels of double width
    constexpr double dSay = 20;
    const int rows = m_s32Rows / 2, columns = m_s32Columns / 2, stride = columns + 2;
    const auto tilesOf = [](int size) {
        return std::max({1, size / s32Tile, std::min(4, size / s32LeastTile)});
    };
    const int down = tilesOf(rows), across = tilesOf(columns);
    const int every = std::max(1, rows / s32Lines);
    struct
    {
        double xx = 1e-9, xy = 0, yy = 1e-9, xr = 0, yr = 0;
        void solve(double& x, double& y) const
        {
            const double det = xx * yy - xy * xy + 1e-3 * square2(xx + yy);
            x = (xr * yy - yr * xy) / det;
            y = (yr * xx - xr * xy) / det;
        }
        static double square2(double value) { return value * value; }
    } all, tile;
    const auto lineOf = [&](const Line& picture, int row) {
        return picture.data() + std::ptrdiff_t{mirrored(row, rows)} * stride + 1;
    };
    for (int i = 0; i < down; ++i)
        for (int j = 0; j < across; ++j) {
            const int top = rows * i / down, bottom = rows * (i + 1) / down;
            const int left = columns * j / across, right = columns * (j + 1) / across;
            GradientSums sums;
            for (int r = top; r < bottom; r += every)
                sumGradients(lineOf(m_vecHalfEstimate, r - 1) + left, lineOf(m_vecHalfEstimate, r) + left,
                             lineOf(m_vecHalfEstimate, r + 1) + left, lineOf(m_vecHalfResidual, r) + left,
                             fScale, sums, right - left);
            const auto total = [](const float(&lanes)[8]) {
                double sum = 0;
                for (const float lane : lanes)
                    sum += lane;
                return sum;
            };
            tile.xx = total(sums.xx) + 1e-6, tile.xy = total(sums.xy), tile.yy = total(sums.yy) + 1e-6;
            tile.xr = total(sums.xr), tile.yr = total(sums.yr);
            double x = 0, y = 0;
            tile.solve(x, y);
            const double explained = x * tile.xr + y * tile.yr;
            const int pixels = (bottom - top + every - 1) / every * (right - left);
            const double rest = std::max(1e-2, (total(sums.rr) - explained) / pixels);
            const double knows = std::max(explained, 0.02 * (tile.xx + tile.yy)) / rest;
            const double weight = std::min(1.0, dSay / std::max(knows, 1e-9)) / rest;
            all.xx += weight * tile.xx, all.xy += weight * tile.xy, all.yy += weight * tile.yy;
            all.xr += weight * tile.xr, all.yr += weight * tile.yr;
        }
    double x = 0, y = 0;
    all.solve(x, y);
    const double pooled = (x * all.xr + y * all.yr) / (dSay * down * across);
    const double sure = std::clamp((pooled - 0.15) / 0.15, 0.0, 1.0);
    m_fShiftX = static_cast<float>(x * sure);
    m_fShiftY = static_cast<float>(y * sure);
    m_fCut = pooled > 0.3
                 ? static_cast<float>(std::clamp((std::hypot(m_fShiftX, m_fShiftY) - 0.25) / 0.25, 0.0, 1.0))
                 : 0;
}

/// Into the first of the lines: what of the residual is the scene's shift. The next three are the estimate
/// as it was before this frame, of the row before, this one and the next.
void Denoiser::explain(int row)
{
    const int stride = m_s32Columns + 2;
    float* explained = m_vecLines.data();
    if (m_fShiftX == 0 && m_fShiftY == 0) {
        if (row == 0)
            std::fill_n(explained, m_s32Columns, m_fCut);
        return;
    }
    const auto copyOf = [&](int r) { return explained + std::ptrdiff_t{1 + (r + 3) % 3} * stride + 1; };
    const auto copy = [&](int from, int to) {
        std::copy_n(estimate(from), m_s32Columns, copyOf(to));
        mirrorEnds(copyOf(to), m_s32Columns, 1);
    };
    if (row == 0) {
        copy(0, -1);
        copy(0, 0);
    }
    // The last row is still as it was when its own turn comes.
    copy(std::min(row + 1, m_s32Rows - 1), row + 1);
    constexpr float fSobel = 1 / 8.0F;
    explainByShift(copyOf(row - 1), copyOf(row), copyOf(row + 1),
                   {m_fShiftX * fSobel, m_fShiftY * fSobel, square(m_fDeviation), m_fCut}, explained,
                   m_s32Columns);
}

void Denoiser::update(const Frame& frame)
{
    m_vecLines.resize(4 * static_cast<std::size_t>(m_s32Columns + 2));
    std::int64_t changed = 0;
    for (int r = 0; r < m_s32Rows; ++r) {
        explain(r);
        const short* rows[5];
        for (int i = 0; i < 5; ++i)
            rows[i] = m_oCoarse[mirrored(r + i - 2, m_s32Rows)] - 2;
        sumOfFive(rows, m_oSums[0] - 2, m_oSums[1] - 2, m_s32Columns + 4);
        changed +=
            updateLine(frame[r], stripesOf(r), m_fLevel,
                       {m_oSums[0], m_oSums[1], m_vecLines.data(), m_fDeviation, m_oStrength.leastGain},
                       estimate(r), m_vecAge.data() + std::ptrdiff_t{r} * m_s32Columns, m_s32Columns);
    }
    m_fChanged = static_cast<float>(static_cast<double>(changed) / 256 / static_cast<double>(frame.total()));
}

/// The energies of the blocks from this row on, in two octaves of the estimate.
void Denoiser::addBlocks(int row)
{
    // Deviations of the bands where the estimate is white noise of deviation 1.
    constexpr float fFine = 0.375F, fCoarse = 0.109375F, fEdges = 0.137109F;
    constexpr int reach = 3, lines = s32Block + 2 * reach; // of the first octave; the second reads two less
    const int stride = m_s32Columns + 2 * s32LineMargin;
    m_vecLines.resize(static_cast<std::size_t>(4 * lines + 5) * static_cast<std::size_t>(stride));
    const auto lineOf = [&](int set, int index) {
        return m_vecLines.data() + std::ptrdiff_t{set * lines + index} * stride + s32LineMargin;
    };
    enum : int
    {
        Low,
        High,
        Low2,
        High2,
        Other
    };
    float *work = lineOf(Other, 0), *fine = lineOf(Other, 1), *coarse = lineOf(Other, 2),
          *edges = lineOf(Other, 3), *unused = lineOf(Other, 4);
    for (float* sums : {fine, coarse, edges, unused})
        std::fill_n(sums, m_s32Columns, 0.0F);
    for (int i = 0; i < lines; ++i) {
        std::copy_n(estimate(mirrored(row + i - reach, m_s32Rows)), m_s32Columns, work);
        mirrorEnds(work, m_s32Columns, 1);
        splitAcross(work, 1, lineOf(Low, i), lineOf(High, i), m_s32Columns);
    }
    for (int i = reach; i < reach + s32Block; ++i)
        splitDown(lineOf(High, i - 1), lineOf(High, i), lineOf(High, i + 1), nullptr, fine, m_s32Columns);
    for (int i = 1; i < lines - 1; ++i) {
        splitDown(lineOf(Low, i - 1), lineOf(Low, i), lineOf(Low, i + 1), work, unused, m_s32Columns);
        mirrorEnds(work, m_s32Columns, 2);
        splitAcross(work, 2, lineOf(Low2, i), lineOf(High2, i), m_s32Columns);
    }
    for (int i = reach; i < reach + s32Block; ++i) {
        splitDown(lineOf(Low2, i - 2), lineOf(Low2, i), lineOf(Low2, i + 2), nullptr, edges, m_s32Columns);
        splitDown(lineOf(High2, i - 2), lineOf(High2, i), lineOf(High2, i + 2), work, coarse, m_s32Columns);
        for (int c = 0; c < m_s32Columns; ++c)
            edges[c] += square(work[c]);
    }
    for (int left = 0; left + s32Block <= m_s32Columns; left += s32Block) {
        float x = 0, y = 0, z = 0;
        for (int c = left; c < left + s32Block; ++c) {
            x += fine[c];
            y += coarse[c];
            z += edges[c];
        }
        constexpr float fPixels = s32Block * s32Block;
        y /= fPixels * square(fCoarse);
        m_vecBlocks.push_back({x / (fPixels * square(fFine)), y, z / (fPixels * square(fEdges)) + y});
    }
}

/// The energy of the finest diagonals is noise, where the next octave has little: a scene has more there.
void Denoiser::findNoise()
{
    m_vecBlocks.clear();
    for (int row = 0; row + s32Block <= m_s32Rows; row += s32Block * everyBlockRow(m_s32Rows, m_s32Columns))
        addBlocks(row);
    const auto calm =
        m_vecBlocks.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(1, m_vecBlocks.size() / 10));
    std::nth_element(m_vecBlocks.begin(), calm - 1, m_vecBlocks.end(),
                     [](const Block& left, const Block& right) { return left.structure < right.structure; });
    float fine = 0, coarse = 0;
    for (auto block = m_vecBlocks.begin(); block != calm; ++block) {
        fine += block->fine;
        coarse += block->coarse;
    }
    const auto count = static_cast<float>(calm - m_vecBlocks.begin());
    constexpr float fSelected = 0.58F;                    // those with the least have so much of the mean
    constexpr float fNoiseRatio = 1.75F, fSceneRatio = 4; // coarse to fine, of slow noise and of scenes
    fine /= count;
    coarse /= count * fSelected;
    float noise =
        std::sqrt(std::clamp((fSceneRatio * fine - coarse) / (fSceneRatio - fNoiseRatio), 0.0F, fine));
    const float ratio = coarse / std::max(fine, 1e-6F);
    const float white = std::max(1.0F, std::min(ratio, 2 * fNoiseRatio - ratio));
    if (m_s32Frames == 0) {
        m_fNoise = noise;
        m_fRatio = white;
        return;
    }
    // What is far above the noise in time is scene. After a cut that one is not known yet.
    if (m_fDeviation > 0 && m_fCut < 0.5F) {
        const float above = noise / m_fDeviation;
        noise = std::min(noise, 1.4F * m_fDeviation) * std::clamp((5 - above) / 2.5F, 0.0F, 1.0F);
    }
    const float share = std::max(0.2F, m_fChanged);
    m_fNoise = towards(m_fNoise, noise, share);
    m_fRatio = towards(m_fRatio, white, share);
}

void Denoiser::findFixedStripes()
{
    constexpr float fLeastNoise = 0.05F;
    if (m_fNoise < fLeastNoise)
        return;
    const float scale = fLaneUnits / m_fNoise;
    constexpr int limit = static_cast<int>(9 * 3 * fLaneUnits), count = Segments::s32Count;
    const float unit = 1 / (9 * scale);
    const float prior = square(0.5F * m_fNoise), largest = 3 * 0.5F * m_fNoise;
    const float share = std::max(0.3F, std::min(1.0F, m_fChanged));
    const auto learn = [&](const Segments& lines, Line& stripes) {
        for (std::size_t i = 0; i < stripes.size(); ++i) {
            const float mean = lines.means[i];
            const float sure = prior / (prior + lines.doubts[i]) *
                               std::max(0.0F, 1 - square(mean / largest)); // larger ones are objects
            stripes[i] = towards(stripes[i], mean * sure, share);
        }
    };

    m_oSegments.clear(m_vecFixedColumns.size());
    const int every = std::max(1, m_s32Rows / 240);
    for (int r = 0; r < m_s32Rows; ++r) {
        toLanes(estimate(r), m_fBase, scale, m_oPicture[r], m_s32Columns);
        mirrorEnds(m_oPicture[r], m_s32Columns, 4);
        if (r % every != 0)
            continue;
        const int s = std::min(count - 1, r * count / m_s32Rows);
        sumAcross(m_oPicture[r], limit, m_oSegments.sums[s].data(), m_oSegments.inside[s].data(),
                  m_s32Columns);
        ++m_oSegments.pixels[s];
    }
    m_oSegments.average(unit, 0, m_vecSegment);
    learn(m_oSegments, m_vecFixedColumns);

    m_oRowSegments.clear(m_vecFixedRows.size());
    short* nine = m_oSums[0];
    std::fill_n(nine, m_s32Columns, short{0});
    const auto lineOf = [&](int row) { return m_oPicture[mirrored(row, m_s32Rows)]; };
    std::fill_n(m_oSums[1], m_s32Columns, short{0});
    for (int r = -4; r < 4; ++r)
        slideLine(lineOf(r), m_oSums[1], nine, m_s32Columns);
    for (int r = 0; r < m_s32Rows; ++r) {
        const short *entering = lineOf(r + 4), *leaving = r == 0 ? m_oSums[1] : lineOf(r - 5);
        for (int s = 0; s < count; ++s) {
            const int from = m_s32Columns * s / count,
                      to = std::min(m_s32Columns * (s + 1) / count, from + s32Part);
            slideLine(entering + from, leaving + from, nine + from, to - from);
            const ClippedSum line = sumDown(m_oPicture[r] + from, nine + from, limit, to - from);
            m_oRowSegments.sums[s][static_cast<std::size_t>(r)] = line.sum;
            m_oRowSegments.inside[s][static_cast<std::size_t>(r)] = line.inside;
            m_oRowSegments.pixels[s] = to - from;
        }
    }
    m_oRowSegments.average(unit, 0, m_vecSegment);
    learn(m_oRowSegments, m_vecFixedRows);

    for (std::size_t c = 0; c < m_vecFixedColumns.size(); ++c)
        m_vecFixedLanes[c] = static_cast<short>(std::lround(m_vecFixedColumns[c] * scale));
    for (int r = 0; r < m_s32Rows; ++r)
        subtractStripes(m_oPicture[r], m_vecFixedLanes.data(),
                        static_cast<short>(std::lround(m_vecFixedRows[static_cast<std::size_t>(r)] * scale)),
                        m_s32Columns);
}

void Denoiser::smooth()
{
    constexpr float fLeastNoise = 0.05F;
    // Differences of neighbours in white noise, before the smoothing across and before that down.
    constexpr float aAcross[] = {1.41421F, 0.48412F, 0.21367F, 0.10326F};
    constexpr float aDown[] = {0.86603F, 0.32775F, 0.14936F, 0.07280F};
    constexpr int aSpacing[] = {1, 1, 2, 2};
    m_oRemoved.create(m_s32Rows, m_s32Columns);
    if (m_fNoise >= fLeastNoise)
        for (int i = 0; i < 4; ++i) {
            const float noise = fLaneUnits * m_oStrength.gates * (i == 0 ? 1 : std::sqrt(m_fRatio));
            const auto gate = [noise](float difference) {
                return Gate{static_cast<short>(std::lround(2 * difference * noise)),
                            static_cast<short>(std::lround(4.5F * difference * noise))};
            };
            smoothOctave(m_oPicture, {1 << i, aSpacing[i], gate(aAcross[i]), gate(aDown[i])}, m_oRemoved,
                         m_vecRings);
        }
}

void Denoiser::finish(Frame& out)
{
    out.create(m_s32Rows, m_s32Columns);
    for (int r = 0; r < m_s32Rows; ++r)
        finishLine(estimate(r), m_oRemoved[r],
                   {m_vecFixedColumns.data(), m_vecFixedRows[static_cast<std::size_t>(r)],
                    m_fNoise / fLaneUnits, m_fLevel},
                   out[r], m_s32Columns);
}

} // namespace velmo::camera

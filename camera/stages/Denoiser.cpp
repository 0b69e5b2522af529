#include "camera/stages/Denoiser.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numeric>

namespace velmo::camera {
namespace {

constexpr int s32LeastSize = 16;
constexpr int s32Part = 64; ///< so many pixels tell how high a quarter of a line is
constexpr float fLeastDeviation = 0.15F;
constexpr float fMeanAbsolute = 1.2533F * 1.05F; ///< over the mean one, of the calmer blocks
constexpr float fLaneUnits = 32;                 ///< to the noise

/// Some rows, of a few thousand pixels, tell how long noise lasts.
int everySampledRow(int rows, int columns)
{
    constexpr int s32Pixels = 4096;
    return std::max(1, rows * columns / s32Pixels);
}

/// From a median on, which what moves has shifted, towards the mean of what is within `reach` of it.
float centred(const Line& values, float centre, float reach)
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

} // namespace

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
    m_vecAge.assign(2 * pixels, 1);
    m_nFirstAge = static_cast<std::ptrdiff_t>(pixels / 2);
    m_fBase = frame(m_s32Rows / 2, m_s32Columns / 2);
    m_fLevel = m_fDeviation = m_fNoise = 0;
    m_fRatio = m_fChanged = 1;
    m_oShift = {};
    m_bMoved = false;
    m_fCorrelation = 1;
    const int sampled = (m_s32Rows - 1) / everySampledRow(m_s32Rows, m_s32Columns) + 1;
    m_vecLastResiduals.assign(static_cast<std::size_t>(sampled) * static_cast<std::size_t>(m_s32Columns), 0);
    m_oLost = {};
    m_vecColumns.assign(static_cast<std::size_t>(m_s32Columns), 0);
    m_vecRows.assign(static_cast<std::size_t>(m_s32Rows), 0);
    m_vecFixedColumns = m_vecColumns;
    m_vecFixedRows = m_vecRows;
    m_vecFixedLanes.assign(m_vecColumns.size(), 0);
    m_oPicture.create(m_s32Rows, m_s32Columns);
    m_oRemoved.create(m_s32Rows, m_s32Columns);
    m_oCoarse.create(m_s32Rows, m_s32Columns);
    m_oSums.create(2, m_s32Columns);
    m_oShiftFinder.create(m_s32Rows, m_s32Columns);
    m_oMover.create(m_s32Columns);
    m_vecFrame.resize(pixels);
}

void Denoiser::follow(const Frame& frame)
{
    const float before = m_fDeviation;
    const auto isNone = [](const SceneShift& shift) { return shift.x == 0 && shift.y == 0; };
    SceneShift shift;
    if (m_bMoved) { // most likely it still does: no need to look closely before it has moved
        m_oShiftFinder.compare(frame, m_vecEstimate);
        shift = m_oShiftFinder.align();
    }
    if (isNone(shift)) {
        compare(frame);
        if (m_oShift.isHinted)
            shift = m_oShiftFinder.align();
    }
    m_bMoved = !isNone(shift);
    if (m_bMoved) {
        moveEstimate(shift);
        beginUnseen(frame);
        m_oLost.move(shift.x, shift.y);
        m_fDeviation = before;
        compare(frame);
    }
    correlate();
    update(frame);
    m_oLost.renew(std::max(m_fChanged, leastGain()));
}

/// Level and stripes of the frame, what it then differs by from the estimate, and what of that is a shift.
void Denoiser::compare(const Frame& frame)
{
    findLevel(frame);
    std::fill(m_vecColumns.begin(), m_vecColumns.end(), 0.0F);
    std::fill(m_vecRows.begin(), m_vecRows.end(), 0.0F);
    const float deviation = deviationOf(frame), before = m_fDeviation;
    float most = before > 0 ? 3 * before : deviation; // a scene that moves is no camera that got noisier
    if (deviation > 1.5F * before)
        most = std::min(most, mostDeviationOf(frame));
    findStripes(frame, std::max(0.2F, std::min({deviation, most, before > 0 ? 2 * before : most})));
    m_fDeviation = std::max(fLeastDeviation, std::min(deviationOf(frame), most));
    takeResiduals(frame);
    m_oShift = m_oShiftFinder.find();
}

/// The estimate, and the age of the nearest pixel. What was not in the picture has none.
void Denoiser::moveEstimate(const SceneShift& shift)
{
    m_oMover.move(estimate(0), m_s32Rows, m_s32Columns, m_s32Columns, shift.x, shift.y, estimate(0));
    const int x = static_cast<int>(std::lround(shift.x)), y = static_cast<int>(std::lround(shift.y));
    const int from = static_cast<int>(std::ceil(std::max(0.0F, -shift.x))),
              to = m_s32Columns - static_cast<int>(std::ceil(std::max(0.0F, shift.x)));
    moveAges(x, y);
    for (int r = 0; r < m_s32Rows; ++r) {
        const float source = static_cast<float>(r) + shift.y;
        const bool isNew = source < 0 || source > static_cast<float>(m_s32Rows - 1);
        std::fill_n(age(r), isNew ? m_s32Columns : from, 0.0F);
        std::fill(age(r) + to, age(r) + m_s32Columns, 0.0F);
    }
}

/// At most by half the picture. What was not in it is anything.
void Denoiser::moveAges(int x, int y)
{
    const std::ptrdiff_t pixels = std::ptrdiff_t{m_s32Rows} * m_s32Columns,
                         by = std::ptrdiff_t{y} * m_s32Columns + x;
    if (m_nFirstAge + by < 0 || m_nFirstAge + by > pixels) { // back to the middle
        std::memmove(m_vecAge.data() + pixels / 2, age(0), static_cast<std::size_t>(pixels) * sizeof(float));
        m_nFirstAge = pixels / 2;
    }
    m_nFirstAge += by;
}

/// What came into the picture: where pixels vary by no more than noise their mean, which counts for two
/// frames. Elsewhere it is followed at once.
void Denoiser::beginUnseen(const Frame& frame)
{
    constexpr int reach = 2;
    // In variances of the residual, which sees only half of noise that lasts.
    const float noise = 1.5F * (1 + m_fCorrelation), detail = 2.3F * (1 + m_fCorrelation);
    constexpr float fFrames = 2;
    const auto begin = [&](int r, int c, float& estimate, float& age) {
        const int own = frame[r][c], left = std::max(0, c - reach),
                  right = std::min(m_s32Columns - 1, c + reach), top = std::max(0, r - reach),
                  bottom = std::min(m_s32Rows - 1, r + reach);
        float sum = 0, squares = 0;
        for (int y = top; y <= bottom; ++y) {
            const u16* row = frame[y];
            for (int x = left; x <= right; ++x) {
                const auto away = static_cast<float>(row[x] - own);
                sum += away;
                squares += away * away;
            }
        }
        const auto count = static_cast<float>((right - left + 1) * (bottom - top + 1));
        const float mean = sum / count;
        const float variance = (squares / count - square(mean)) / square(m_fDeviation);
        const float flat = std::clamp((detail - variance) / (detail - noise), 0.0F, 1.0F);
        estimate = static_cast<float>(own) - m_fLevel + flat * mean;
        age = flat * fFrames;
    };
    for (int r = 0; r < m_s32Rows; ++r) {
        float* ages = age(r);
        int c = 0; // it comes in from the ends of a row, if not in all of it
        for (; c < m_s32Columns && ages[c] == 0; ++c)
            begin(r, c, estimate(r)[c], ages[c]);
        for (int last = m_s32Columns - 1; last > c && ages[last] == 0; --last)
            begin(r, last, estimate(r)[last], ages[last]);
    }
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
    const int across = m_s32Columns / s32NoiseBlock, every = everyNoiseBlockRow(m_s32Rows, m_s32Columns);
    constexpr float fNotice = 0.01F;
    const bool isBlurred = std::max(m_oLost.across(), m_oLost.down()) > fNotice;
    m_vecSorted.clear();
    for (int top = 0; top + s32NoiseBlock <= m_s32Rows; top += every * s32NoiseBlock) {
        m_vecSegment.assign(static_cast<std::size_t>(m_s32Columns), 0);
        for (int r = top; r < top + s32NoiseBlock; ++r) {
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
            for (int c = b * s32NoiseBlock; c < (b + 1) * s32NoiseBlock; ++c)
                sum += m_vecSegment[static_cast<std::size_t>(c)];
            m_vecSorted.push_back(sum / (s32NoiseBlock * s32NoiseBlock));
        }
        if (isBlurred)
            leaveLostDetailOut(frame, top, m_vecSorted.data() + m_vecSorted.size() - across);
    }
    return fMeanAbsolute * quantile(m_vecSorted, 0.4);
}

/// What the estimate lost of its detail when it moved is no noise: that of a scene is far larger.
/// @param blocks  mean absolute differences of a row of blocks
void Denoiser::leaveLostDetailOut(const Frame& frame, int top, float* blocks)
{
    constexpr float fOfNoise = 0.375F; // its energy in a quarter of the second differences
    constexpr float fLeast = 0.3F;
    const float across = m_oLost.across(), down = m_oLost.down();
    const float ofNoise = std::max(fLeast, 1 - fOfNoise * (across + down));
    m_vecLines.assign(2 * static_cast<std::size_t>(m_s32Columns), 0);
    float *sumsAcross = m_vecLines.data(), *sumsDown = sumsAcross + m_s32Columns;
    for (int r = top; r < top + s32NoiseBlock; ++r) {
        const u16 *above = frame[mirrored(r - 1, m_s32Rows)], *in = frame[r],
                  *below = frame[mirrored(r + 1, m_s32Rows)];
        for (int c = 1; c + 1 < m_s32Columns; ++c) {
            sumsAcross[c] += static_cast<float>(std::abs(2 * in[c] - in[c - 1] - in[c + 1]));
            sumsDown[c] += static_cast<float>(std::abs(2 * in[c] - above[c] - below[c]));
        }
    }
    constexpr float fQuarter = 1 / (4.0F * s32NoiseBlock * s32NoiseBlock);
    for (int b = 0; b < m_s32Columns / s32NoiseBlock;
         ++b, sumsAcross += s32NoiseBlock, sumsDown += s32NoiseBlock) {
        const float lost =
            across * square(fQuarter * std::accumulate(sumsAcross, sumsAcross + s32NoiseBlock, 0.0F)) +
            down * square(fQuarter * std::accumulate(sumsDown, sumsDown + s32NoiseBlock, 0.0F));
        blocks[b] = std::sqrt(std::max(0.0F, square(blocks[b]) - lost) / ofNoise);
    }
}

/// Noise in time shows in the octaves of a single frame, too, and a scene only adds to them: what two frames
/// differ by beyond that is no noise.
float Denoiser::mostDeviationOf(const Frame& frame)
{
    for (int r = 0; r < m_s32Rows; ++r)
        std::copy_n(frame[r], m_s32Columns, m_vecFrame.data() + std::ptrdiff_t{r} * m_s32Columns);
    constexpr float fOfTwo = 1.6F; // frames, and some room
    return fOfTwo * m_oNoiseMeter.of(m_vecFrame.data(), m_s32Rows, m_s32Columns).most;
}

void Denoiser::findStripes(const Frame& frame, float deviation)
{
    const float unit = 2.5F * deviation / s32LineClip;
    constexpr int count = LineMeans::s32Segments;
    m_oColumnMeans.clear(m_vecColumns.size());
    m_oRowMeans.clear(m_vecRows.size());
    std::int64_t sum = 0, inside = 0;
    for (int r = 0; r < m_s32Rows; ++r) {
        const int down = std::min(count - 1, r * count / m_s32Rows);
        ++m_oColumnMeans.pixels[down];
        for (int s = 0; s < count; ++s) {
            const int from = m_s32Columns * s / count, to = m_s32Columns * (s + 1) / count;
            const ClippedSum line = sumDifferences({frame[r] + from, estimate(r) + from, m_fLevel}, 1 / unit,
                                                   m_oColumnMeans.sums[down].data() + from,
                                                   m_oColumnMeans.inside[down].data() + from, to - from);
            m_oRowMeans.sums[s][static_cast<std::size_t>(r)] = line.sum;
            m_oRowMeans.inside[s][static_cast<std::size_t>(r)] = line.inside;
            m_oRowMeans.pixels[s] = to - from;
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
    const float trust = std::max(0.0F, 1 - m_fChanged);
    m_oColumnMeans.average(unit, reach);
    m_oColumnMeans.shrink(deviation, trust, m_vecColumns);
    m_oRowMeans.average(unit, reach);
    m_oRowMeans.shrink(deviation, trust, m_vecRows);
    constexpr float fLeastShare = 0.02F;
    m_fStripeShare = std::max({fLeastShare, 1 / static_cast<float>(m_s32Frames + 1), m_fChanged});
}

void Denoiser::takeResiduals(const Frame& frame)
{
    m_vecLines.resize(4 * static_cast<std::size_t>(m_s32Columns));
    for (int r = 0; r < m_s32Rows; ++r) {
        float* from = m_vecLines.data() + (r % 2) * m_s32Columns;
        float* residual = from + 2 * m_s32Columns;
        takeResidual({frame[r], estimate(r), m_fLevel}, stripesOf(r), s32ResidualUnit / m_fDeviation, from,
                     residual, m_oCoarse[r], m_s32Columns);
        mirrorEnds(m_oCoarse[r], m_s32Columns, 2);
        if (r % 2 == 1)
            m_oShiftFinder.put(r / 2, {from - m_s32Columns, from}, {residual - m_s32Columns, residual});
    }
}

/// How far the noise of this frame is that of the last one.
void Denoiser::correlate()
{
    constexpr int s32Limit = 3 * s32ResidualUnit;
    const int every = everySampledRow(m_s32Rows, m_s32Columns);
    std::int64_t both = 0, own = 0, other = 0;
    for (int r = 0; r < m_s32Rows; r += every) {
        short* last = m_vecLastResiduals.data() + std::ptrdiff_t{r / every} * m_s32Columns;
        const short* now = m_oCoarse[r];
        int sums[3] = {};
        for (int c = 0; c < m_s32Columns; ++c) {
            const auto value = static_cast<short>(std::clamp<int>(now[c], -s32Limit, s32Limit));
            sums[0] += value * last[c];
            sums[1] += value * value;
            sums[2] += last[c] * last[c];
            last[c] = value;
        }
        both += sums[0];
        own += sums[1];
        other += sums[2];
    }
    const auto most = static_cast<float>(std::max({own, other, std::int64_t{1}}));
    if (m_s32Frames > 1) // all may last until two residuals are known
        m_fCorrelation = towards(m_fCorrelation, std::max(0.0F, static_cast<float>(both) / most),
                                 std::max(0.2F, 1 / static_cast<float>(m_s32Frames - 1)));
}

/// Into the first of the lines: what of the residual is the scene's shift. The next three are the estimate
/// as it was before this frame, of the row before, this one and the next.
void Denoiser::explain(int row)
{
    const int stride = m_s32Columns + 2;
    float* explained = m_vecLines.data();
    if (m_oShift.x == 0 && m_oShift.y == 0) {
        if (row == 0)
            std::fill_n(explained, m_s32Columns, m_oShift.cut);
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
                   {m_oShift.x * fSobel, m_oShift.y * fSobel, square(m_fDeviation), m_oShift.cut}, explained,
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
        changed += updateLine(frame[r], stripesOf(r), m_fLevel,
                              {m_oSums[0], m_oSums[1], m_vecLines.data(), m_fDeviation, leastGain()},
                              estimate(r), age(r), m_s32Columns);
    }
    m_fChanged = static_cast<float>(static_cast<double>(changed) / 256 / static_cast<double>(frame.total()));
}

/// What the estimate may still have of the noise in time: of white noise what so long a mean has, of noise
/// that lasts all, and as much again of what is so slow that the mean follows it.
float Denoiser::noiseLeft() const
{
    const float young = 1 / static_cast<float>(m_s32Frames + 1);
    const float gain = std::max({m_oStrength.leastGain, young, m_fChanged});
    const float ofWhite = std::sqrt(std::max({m_oStrength.leastGain / 2, young, m_fChanged}));
    const float lasting = std::min(1.0F, m_fCorrelation / std::max(0.1F, 1 - gain));
    return m_fDeviation * towards(ofWhite, 2, lasting);
}

void Denoiser::findNoise()
{
    const OctaveNoise found = m_oNoiseMeter.of(m_vecEstimate.data(), m_s32Rows, m_s32Columns);
    float noise = found.deviation;
    const float ratio = found.ratio;
    if (m_s32Frames == 0) {
        m_fNoise = noise;
        m_fRatio = ratio;
        return;
    }
    // What is far above the noise in time is scene, and of what may be scene only what time left is noise.
    // After a cut that one is not known yet.
    if (m_fDeviation > 0 && m_oShift.cut < 0.5F) {
        const float above = noise / m_fDeviation;
        noise = std::min(noise, 1.4F * m_fDeviation) * std::clamp((5 - above) / 2.5F, 0.0F, 1.0F);
        const float left = std::min(noise, noiseLeft());
        noise = std::sqrt(towards(square(left), square(noise), found.sure));
    }
    // Between pixels its finest octave goes, and the noise of wider ones stays: that of so long a mean.
    if (m_bMoved)
        noise = std::max(noise, 1.2F * m_fDeviation * std::sqrt(leastGain() / 2));
    const float share = std::max(0.2F, m_fChanged);
    m_fNoise = towards(m_fNoise, noise, share);
    m_fRatio = towards(m_fRatio, ratio, share);
}

void Denoiser::findFixedStripes()
{
    constexpr float fLeastNoise = 0.05F;
    if (m_fNoise < fLeastNoise)
        return;
    const float scale = fLaneUnits / m_fNoise;
    constexpr int count = LineMeans::s32Segments;
    // Nine times as much, in 16 bits.
    const int limit = static_cast<int>(std::min(32000.0F, 9 * 3 * scale * std::max(m_fNoise, m_fDeviation)));
    const float unit = 1 / (9 * scale);
    const float share = std::max(0.3F, std::min(1.0F, m_fChanged));

    m_oColumnMeans.clear(m_vecFixedColumns.size());
    const int every = std::max(1, m_s32Rows / 240);
    for (int r = 0; r < m_s32Rows; ++r) {
        toLanes(estimate(r), m_fBase, scale, m_oPicture[r], m_s32Columns);
        mirrorEnds(m_oPicture[r], m_s32Columns, 4);
        if (r % every != 0)
            continue;
        const int s = std::min(count - 1, r * count / m_s32Rows);
        sumAcross(m_oPicture[r], limit, m_oColumnMeans.sums[s].data(), m_oColumnMeans.inside[s].data(),
                  m_s32Columns);
        ++m_oColumnMeans.pixels[s];
    }
    m_oColumnMeans.average(unit, 0);
    m_oColumnMeans.learn(m_fNoise, m_fDeviation, share, m_vecFixedColumns);

    m_oRowMeans.clear(m_vecFixedRows.size());
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
            m_oRowMeans.sums[s][static_cast<std::size_t>(r)] = line.sum;
            m_oRowMeans.inside[s][static_cast<std::size_t>(r)] = line.inside;
            m_oRowMeans.pixels[s] = to - from;
        }
    }
    m_oRowMeans.average(unit, 0);
    m_oRowMeans.learn(m_fNoise, m_fDeviation, share, m_vecFixedRows);

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
    // Slopes are followed where most of the noise is; what is wide has hardly any left.
    constexpr short aBend[] = {3, 4, 0, 0};
    if (m_fNoise < fLeastNoise) {
        std::fill(m_oRemoved.values.begin(), m_oRemoved.values.end(), short{0});
        return;
    }
    // The second octave is measured. How much more than white noise wider ones have nothing tells apart from
    // a scene: about as much as that of sensors in flat scenes, so that a small step of a scene is none.
    const float aWider[] = {1, std::sqrt(m_fRatio), 1.12F, 1.12F};
    for (int i = 0; i < 4; ++i) {
        const float noise = fLaneUnits * m_oStrength.gates * aWider[i];
        const auto gate = [noise](float difference) {
            return Gate{static_cast<short>(std::lround(2 * difference * noise)),
                        static_cast<short>(std::lround(4.5F * difference * noise))};
        };
        smoothOctave(m_oPicture, {1 << i, aSpacing[i], gate(aAcross[i]), gate(aDown[i]), aBend[i], i == 0},
                     m_oRemoved, m_vecRings);
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

#include "camera/stages/DenoiseShift.h"

#include "camera/stages/DenoiseKernel.h"

namespace velmo::camera {
namespace {

constexpr int s32Tile = 16, s32LeastTile = 6, s32Lines = 120;
constexpr float fSobel = 1 / 8.0F; ///< of the operator, for a pixel's width
constexpr double dSay = 20;        ///< of a tile, in variances of its residual
constexpr float fLeastMove = 0.1F;
constexpr double dNear = 0.06; ///< in pixels of a level: what is sure there is sure

double total(const float (&lanes)[8])
{
    return ((lanes[0] + double{lanes[1]}) + (lanes[2] + double{lanes[3]})) +
           ((lanes[4] + double{lanes[5]}) + (lanes[6] + double{lanes[7]}));
}

cv::Size tilesOf(int rows, int columns, int tile)
{
    const auto along = [tile](int size) {
        return std::max({1, size / tile, std::min(4, size / s32LeastTile)});
    };
    return {along(columns), along(rows)};
}

cv::Rect tileAt(const cv::Size& tiles, int number, int rows, int columns)
{
    const int i = number / tiles.width, j = number % tiles.width;
    const cv::Point from(columns * j / tiles.width, rows * i / tiles.height),
        to(columns * (j + 1) / tiles.width, rows * (i + 1) / tiles.height);
    return {from, to};
}

/// Large pictures are told by part of their lines.
int everyLine(int rows)
{
    return std::max(1, rows / s32Lines);
}

/// The weight w of pixels on both sides, 1 - 2w in the middle, with which so much noise is left.
float sideFor(float kept)
{
    return (4 - std::sqrt(std::max(0.0F, 16 - 24 * (1 - kept)))) / 12;
}

} // namespace

/// x and y that explain best what they shift, by their products.
struct ShiftFinder::Equations
{
    double xx = 1e-9, xy = 0, yy = 1e-9, xr = 0, yr = 0;

    void solve(double& x, double& y) const
    {
        const double trace = xx + yy, det = xx * yy - xy * xy + 1e-3 * (trace * trace);
        x = (xr * yy - yr * xy) / det;
        y = (yr * xx - xr * xy) / det;
    }
};

void ShiftFinder::Level::create(int newRows, int newColumns)
{
    constexpr std::size_t nBehind = 8; // which the loops read
    rows = newRows, columns = newColumns, stride = columns + 2;
    estimate.assign(static_cast<std::size_t>(rows + 2) * static_cast<std::size_t>(stride) + nBehind, 0);
    residual = moved = rest = estimate;
    inside = {0, 0, columns, rows};
}

void ShiftFinder::Level::closeLine(Line& of, int row) const
{
    mirrorEnds(line(of, row), columns, 1);
    for (const int beyond : {-1, rows})
        if (row == mirrored(beyond, rows))
            std::copy_n(line(of, row) - 1, stride, line(of, beyond) - 1);
}

void ShiftFinder::create(int rows, int columns)
{
    constexpr int s32Least = 12;
    m_nLevels = 0;
    for (Level& level : m_aLevels) {
        rows /= 2, columns /= 2;
        if (m_nLevels > 0 && (rows < s32Least || columns < s32Least))
            break;
        level.create(rows, columns);
        ++m_nLevels;
    }
    m_oMover.create(m_aLevels[0].columns);
    m_vecGains.reserve(m_aLevels[0].estimate.size() / (s32LeastTile * s32LeastTile) + 16);
}

void ShiftFinder::put(int row, const float* const (&estimate)[2], const float* const (&residual)[2])
{
    Level& half = m_aLevels[0];
    float* line = half.line(half.estimate, row);
    halve(estimate[0], estimate[1], line, half.columns);
    half.closeLine(half.estimate, row);
    halve(residual[0], residual[1], half.line(half.residual, row), half.columns);
}

void ShiftFinder::compare(const Frame& frame, const Line& estimate)
{
    Level& half = m_aLevels[0];
    for (int r = 0; r < half.rows; ++r) {
        const auto lineOf = [&](int row) { return estimate.data() + std::ptrdiff_t{row} * frame.cols; };
        halveComparison({frame[2 * r], frame[2 * r + 1]}, {lineOf(2 * r), lineOf(2 * r + 1)},
                        half.line(half.estimate, r), half.line(half.residual, r), half.columns);
        half.closeLine(half.estimate, r);
    }
}

/// Of the part of the picture that is inside.
ShiftFinder::Equations ShiftFinder::equationsOf(const Level& level, const Line& estimate,
                                                const Line& residual, float residualLevel, int tileSize,
                                                float scale)
{
    const cv::Size tiles = tilesOf(level.rows, level.columns, tileSize);
    const int every = everyLine(level.rows);
    Equations all, tile;
    for (int number = 0; number < tiles.area(); ++number) {
        const cv::Rect part = tileAt(tiles, number, level.rows, level.columns) & level.inside;
        if (part.empty())
            continue;
        GradientSums sums;
        const std::ptrdiff_t at = level.at(part.y, part.x);
        sumGradients(estimate.data() + at, residual.data() + at, residualLevel, scale,
                     {level.stride, part.height, every, part.width}, sums);
        const int lines = (part.height + every - 1) / every;
        tile.xx = total(sums.xx) + 1e-6, tile.xy = total(sums.xy), tile.yy = total(sums.yy) + 1e-6;
        tile.xr = total(sums.xr), tile.yr = total(sums.yr);
        double x = 0, y = 0;
        tile.solve(x, y);
        const double explained = x * tile.xr + y * tile.yr;
        const double rest = std::max(1e-2, (total(sums.rr) - explained) / (lines * part.width));
        const double knows = std::max(explained, 0.02 * (tile.xx + tile.yy)) / rest;
        const double weight = std::min(1.0, dSay / std::max(knows, 1e-9)) / rest;
        all.xx += weight * tile.xx, all.xy += weight * tile.xy, all.yy += weight * tile.yy;
        all.xr += weight * tile.xr, all.yr += weight * tile.yr;
    }
    return all;
}

SceneShift ShiftFinder::find() const
{
    const Level& half = m_aLevels[0];
    Equations all = equationsOf(half, half.estimate, half.residual, 0, s32Tile, fSobel / 2);
    double x = 0, y = 0;
    all.solve(x, y);
    const double explained = x * all.xr + y * all.yr;
    const double pooled = explained / (dSay * tilesOf(half.rows, half.columns, s32Tile).area());
    const double sure = std::clamp((pooled - 0.15) / 0.15, 0.0, 1.0);
    SceneShift shift{static_cast<float>(x * sure), static_cast<float>(y * sure)};
    constexpr double dChance = 10;
    shift.isHinted = explained > dChance;
    if (pooled > 0.3)
        shift.cut = static_cast<float>(std::clamp((std::hypot(shift.x, shift.y) - 0.25) / 0.25, 0.0, 1.0));
    return shift;
}

/// To (x, y), in pixels of the level. The level of the frame does not count.
void ShiftFinder::move(Level& level, float x, float y)
{
    const int rows = level.rows, columns = level.columns;
    level.x = x, level.y = y;
    m_oMover.move(level.line(level.estimate, 0), rows, columns, level.stride, x, y,
                  level.line(level.moved, 0));
    const auto known = [](float shift, int size) {
        const int from = static_cast<int>(std::ceil(std::max(0.0F, -shift))),
                  beyond = static_cast<int>(std::ceil(std::max(0.0F, shift)));
        return cv::Range(from, size - beyond);
    };
    const cv::Range across = known(x, columns), down = known(y, rows);
    for (int r = 0; r < rows; ++r) {
        level.closeLine(level.moved, r);
        takeRest(level.line(level.estimate, r), level.line(level.residual, r), level.line(level.moved, r),
                 level.line(level.rest, r), columns);
    }
    level.inside = {across.start, down.start, across.size(), down.size()};
    level.restLevel = meanOf(level, level.rest);
}

/// Inside.
float ShiftFinder::meanOf(const Level& level, const Line& of)
{
    float sums[8] = {};
    for (int r = 0; r < level.inside.height; ++r)
        sumLine(of.data() + level.at(level.inside.y + r, level.inside.x), sums, level.inside.width);
    return static_cast<float>(total(sums) / level.inside.area());
}

/// From (x, y) on to where the slopes lead.
void ShiftFinder::approach(Level& level, int tile, double& x, double& y)
{
    const auto stepped = [](double from, double step, int size) {
        return std::clamp(from + std::clamp(step, -1.0, 1.0), -0.25 * size, 0.25 * size);
    };
    for (int round = 0; round < 2; ++round) {
        move(level, static_cast<float>(x), static_cast<float>(y));
        double stepX = 0, stepY = 0;
        equationsOf(level, level.moved, level.rest, level.restLevel, tile, fSobel).solve(stepX, stepY);
        x = stepped(x, stepX, level.columns);
        y = stepped(y, stepY, level.rows);
    }
}

/// How far the place that the estimate is moved to is beyond chance: what the tiles win by it, none more than
/// its say, over the larger of how much they disagree and of how much noise would win.
ShiftFinder::Evidence ShiftFinder::evidenceOf(const Level& level, int tileSize)
{
    const cv::Rect inside = level.inside;
    // The estimate where it is, as smooth as it becomes between pixels: that alone brings it nearer.
    const auto gainAt = [&, residualLevel = meanOf(level, level.residual),
                         sideX = sideFor(keptNoise(level.x)),
                         sideY = sideFor(keptNoise(level.y))](std::ptrdiff_t at) {
        return Gain{level.estimate.data() + at,
                    level.residual.data() + at,
                    level.moved.data() + at,
                    level.rest.data() + at,
                    residualLevel,
                    level.restLevel,
                    sideX,
                    sideY};
    };

    const cv::Size tiles = tilesOf(level.rows, level.columns, tileSize);
    const int every = 2 * everyLine(level.rows) - 1;
    constexpr double dOfNoise = 3; // 1.2 deviations in the estimate, both where it was and where it is
    double won = 0, chance = 0, detailed = 0;
    m_vecGains.clear();
    for (int number = 0; number < tiles.area(); ++number) {
        const cv::Rect part = tileAt(tiles, number, level.rows, level.columns) & inside;
        const int count = (part.height + every - 1) / every * part.width;
        if (count < 8)
            continue;
        GainSums sums;
        sumGains(gainAt(level.at(part.y, part.x)), {level.stride, part.height, every, part.width}, sums);
        const double before = total(sums.before), after = total(sums.after), moves = total(sums.moves);
        const double variance = std::max(1e-2, std::min(before, after) / count);
        const double gain = (before - after) / variance, most = moves / variance;
        const double weight = std::min(1.0, dSay / std::max({1e-9, most, std::abs(gain)}));
        detailed += most > dOfNoise * count ? 1 : 0;
        won += weight * gain;
        chance += 4 * weight * weight * most;
        m_vecGains.push_back(static_cast<float>(weight * gain));
    }
    const auto count = static_cast<double>(m_vecGains.size());
    if (count < 2)
        return {};
    double spread = 0;
    for (const float gain : m_vecGains)
        spread += std::pow(gain - won / count, 2);
    return {won / std::sqrt(std::max(chance, spread * count / (count - 1)) + 4), detailed / count};
}

void ShiftFinder::halveLevels()
{
    for (std::size_t i = 1; i < m_nLevels; ++i) {
        const Level& from = m_aLevels[i - 1];
        Level& to = m_aLevels[i];
        for (int r = 0; r < to.rows; ++r) {
            halve(from.line(from.estimate, 2 * r), from.line(from.estimate, 2 * r + 1),
                  to.line(to.estimate, r), to.columns);
            to.closeLine(to.estimate, r);
            halve(from.line(from.residual, 2 * r), from.line(from.residual, 2 * r + 1),
                  to.line(to.residual, r), to.columns);
        }
    }
}

SceneShift ShiftFinder::align()
{
    constexpr double dCoarse = 1.5, dSure = 6, dFewTiles = 0.1;
    halveLevels();
    const int largest = s32Tile * everyLine(m_aLevels[0].rows); // a few dozen tiles tell enough
    SceneShift far;      // as the coarsest level sees it, where it is sure there
    double x = 0, y = 0; // in pixels of the level
    for (std::size_t i = m_nLevels; i-- > 0; x *= 2, y *= 2) {
        Level& level = m_aLevels[i];
        const int tile = std::max(4, largest >> i);
        const bool isFinest = i == 0, isCoarsest = i + 1 == m_nLevels;
        approach(level, tile, x, y);
        if (!isFinest && !isCoarsest)
            continue;
        Evidence found;
        if (std::hypot(x - level.x, y - level.y) < dNear)
            found = evidenceOf(level, tile);
        if (found.certainty < dSure) {
            move(level, static_cast<float>(x), static_cast<float>(y));
            found = evidenceOf(level, tile);
        }
        if (isFinest && found.certainty < dSure) {
            if (far.x == 0 && far.y == 0)
                return {};
            // What stays where it is, or hides the shift, may all be noise.
            move(level, far.x / 2, far.y / 2);
            return evidenceOf(level, tile).detailed < dFewTiles ? far : SceneShift{};
        }
        if (found.certainty < dCoarse)
            return {};
        if (found.certainty > dSure) {
            const auto size = static_cast<double>(2U << i);
            far.x = static_cast<float>(x * size);
            far.y = static_cast<float>(y * size);
        }
    }
    // Less is left to the estimate, which follows, instead of smoothing it between pixels all the time.
    return std::hypot(x, y) < fLeastMove ? SceneShift{}
                                         : SceneShift{static_cast<float>(x), static_cast<float>(y)};
}

} // namespace velmo::camera

#include "camera/stages/DenoiseShift.h"

#include "camera/stages/DenoiseKernel.h"

namespace velmo::camera {
namespace {

/// x and y that explain best what they shift, by their products.
struct Equations
{
    double xx = 1e-9, xy = 0, yy = 1e-9, xr = 0, yr = 0;

    void solve(double& x, double& y) const
    {
        const double trace = xx + yy, det = xx * yy - xy * xy + 1e-3 * (trace * trace);
        x = (xr * yy - yr * xy) / det;
        y = (yr * xx - xr * xy) / det;
    }
};

double total(const float (&lanes)[8])
{
    double sum = 0;
    for (const float lane : lanes)
        sum += lane;
    return sum;
}

} // namespace

void ShiftFinder::create(int rows, int columns)
{
    m_s32Rows = rows / 2, m_s32Columns = columns / 2, m_s32Stride = m_s32Columns + 2;
    m_vecEstimate.assign(static_cast<std::size_t>(m_s32Rows) * static_cast<std::size_t>(m_s32Stride), 0);
    m_vecResidual = m_vecEstimate;
}

void ShiftFinder::put(int row, const float* const (&estimate)[2], const float* const (&residual)[2])
{
    const std::ptrdiff_t at = std::ptrdiff_t{row} * m_s32Stride + 1;
    halve(estimate[0], estimate[1], m_vecEstimate.data() + at, m_s32Columns);
    mirrorEnds(m_vecEstimate.data() + at, m_s32Columns, 1);
    halve(residual[0], residual[1], m_vecResidual.data() + at, m_s32Columns);
}

SceneShift ShiftFinder::find() const
{
    constexpr int s32Tile = 16, s32LeastTile = 6, s32Lines = 120;
    constexpr float fScale = 1 / 16.0F; // of the Sobel operator, for pixels of double width
    constexpr double dSay = 20;
    const auto tilesOf = [](int size) {
        return std::max({1, size / s32Tile, std::min(4, size / s32LeastTile)});
    };
    const int down = tilesOf(m_s32Rows), across = tilesOf(m_s32Columns);
    const int every = std::max(1, m_s32Rows / s32Lines);
    Equations all, tile;
    const auto lineOf = [&](const Line& picture, int row) {
        return picture.data() + std::ptrdiff_t{mirrored(row, m_s32Rows)} * m_s32Stride + 1;
    };
    for (int i = 0; i < down; ++i)
        for (int j = 0; j < across; ++j) {
            const int top = m_s32Rows * i / down, bottom = m_s32Rows * (i + 1) / down;
            const int left = m_s32Columns * j / across, right = m_s32Columns * (j + 1) / across;
            GradientSums sums;
            for (int r = top; r < bottom; r += every)
                sumGradients(lineOf(m_vecEstimate, r - 1) + left, lineOf(m_vecEstimate, r) + left,
                             lineOf(m_vecEstimate, r + 1) + left, lineOf(m_vecResidual, r) + left, fScale,
                             sums, right - left);
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
    SceneShift shift{static_cast<float>(x * sure), static_cast<float>(y * sure)};
    if (pooled > 0.3)
        shift.cut = static_cast<float>(std::clamp((std::hypot(shift.x, shift.y) - 0.25) / 0.25, 0.0, 1.0));
    return shift;
}

} // namespace velmo::camera

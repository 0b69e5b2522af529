#include "camera/pixels/OddSpots.h"
#include "camera/pixels/Robust.h"
#include "camera/pixels/SearchRules.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace velmo::camera {
namespace {

/// How a row differs from its two neighbours.
struct Difference
{
    float mean = 0; ///< from both, the median along the row
    float both = 0; ///< from the nearer one, where both differ to the same side: horizons and borders do not
    float sameSide = 0;    ///< part of the pixels that differ to the side on which most do
    float outstanding = 0; ///< part of the pixels that are defective, or far from both neighbours
};

/// Rows of the plane that are off. For columns everything comes transposed.
class Lines
{
public:
    Lines(const Plane& plane, const Mask& bad, const Plane& deviation)
        : m_oPlane(plane), m_oBad(bad), m_oDeviation(deviation)
    {}

    /// How far each row is out, in what rows usually differ; 0 for good ones.
    std::vector<float> find() const;

private:
    static constexpr int farPixel = 8;         ///< deviations
    static constexpr float farRow = 8;         ///< usual differences
    static constexpr float mostPixels = 0.8F;  ///< of a row on one side
    static constexpr float manyPixels = 0.15F; ///< outstanding, more than usual
    static constexpr float leastUsual = 0.15F; ///< rounding and the like
    static constexpr float leak = 0.15F;       ///< into the rows beside it: that is a thing of the scene

    Difference differenceOf(int row) const;
    float step(int from, int to) const;
    bool leaks(int row, float both) const;

    const Plane& m_oPlane;
    const Mask& m_oBad;
    const Plane& m_oDeviation;
};

Difference Lines::differenceOf(int row) const
{
    std::vector<float> fromAbove, fromBelow, means;
    int total = 0, outstanding = 0, up = 0;
    for (int x = 0; x < m_oPlane.cols; ++x) {
        if (m_oBad(row, x) != 0) {
            ++total;
            continue;
        }
        if (row == 0 || row == m_oPlane.rows - 1 || m_oBad(row - 1, x) != 0 || m_oBad(row + 1, x) != 0)
            continue;
        const float above = m_oPlane(row, x) - m_oPlane(row - 1, x);
        const float below = m_oPlane(row, x) - m_oPlane(row + 1, x);
        fromAbove.push_back(above);
        fromBelow.push_back(below);
        means.push_back((above + below) / 2);
        ++total;
        up += above + below > 0 ? 1 : 0;
        const bool far = std::min(std::abs(above), std::abs(below)) > farPixel * m_oDeviation(row, x);
        outstanding += above * below > 0 && far ? 1 : 0;
    }
    if (means.size() < 8)
        return {};
    const auto count = static_cast<float>(means.size());
    const float above = medianOf(fromAbove), below = medianOf(fromBelow);
    const float nearer = std::abs(above) < std::abs(below) ? above : below;
    return {medianOf(means), above * below > 0 ? nearer : 0,
            std::max(static_cast<float>(up), count - static_cast<float>(up)) / count,
            static_cast<float>(outstanding) / static_cast<float>(total)};
}

/// The median difference of two rows.
float Lines::step(int from, int to) const
{
    std::vector<float> steps;
    if (from >= 0 && to >= 0 && from < m_oPlane.rows && to < m_oPlane.rows)
        for (int x = 0; x < m_oPlane.cols; ++x)
            if (m_oBad(from, x) == 0 && m_oBad(to, x) == 0)
                steps.push_back(m_oPlane(from, x) - m_oPlane(to, x));
    return steps.size() < 8 ? 0 : medianOf(steps);
}

bool Lines::leaks(int row, float both) const
{
    const float beside = (step(row - 1, row - 2) + step(row + 1, row + 2)) / 2;
    return beside / (both + beside) > leak;
}

std::vector<float> Lines::find() const
{
    const int rows = m_oPlane.rows;
    std::vector<float> far(static_cast<std::size_t>(rows), 0), sizes, parts;
    std::vector<Difference> differences;
    for (int row = 0; row < rows; ++row) {
        differences.push_back(differenceOf(row));
        sizes.push_back(std::abs(differences.back().mean));
        parts.push_back(differences.back().outstanding);
    }
    std::vector<float> all = sizes;
    const float usualOfAll = medianOf(all);
    const float usualPart = medianOf(parts);
    for (int row = 0; row < rows; ++row) {
        std::vector<float> near;
        for (int other = std::max(row - 8, 0); other <= std::min(row + 8, rows - 1); ++other)
            if (other != row)
                near.push_back(sizes[static_cast<std::size_t>(other)]);
        const float usual = std::max({medianOf(near), usualOfAll, leastUsual});
        const Difference& difference = differences[static_cast<std::size_t>(row)];
        const float out = difference.both / usual;
        const bool off =
            std::abs(out) > farRow && difference.sameSide > mostPixels && !leaks(row, difference.both);
        if (off || difference.outstanding > manyPixels + usualPart)
            far[static_cast<std::size_t>(row)] = out == 0 ? 1 : out;
    }
    return far;
}

Plane deviationsOf(Suspects& suspects)
{
    OddSpots spots(suspects.mean, suspects.bad, {});
    Plane deviations(suspects.mean.size());
    for (int y = 0; y < deviations.rows; ++y)
        for (int x = 0; x < deviations.cols; ++x)
            deviations(y, x) = spots.deviation(y, x);
    return deviations;
}

} // namespace

void findLines(Suspects& suspects)
{
    if (suspects.mean.rows < 8 || suspects.mean.cols < 8)
        return;
    const Plane deviations = deviationsOf(suspects);
    const std::vector<float> rows = Lines(suspects.mean, suspects.bad, deviations).find();
    const std::vector<float> columns =
        Lines(Plane(suspects.mean.t()), Mask(suspects.bad.t()), Plane(deviations.t())).find();
    for (int y = 0; y < suspects.mean.rows; ++y)
        for (int x = 0; x < suspects.mean.cols; ++x) {
            if (const float far = rows[static_cast<std::size_t>(y)]; far != 0)
                suspects.flag({x, y}, BadRow, far);
            if (const float far = columns[static_cast<std::size_t>(x)]; far != 0)
                suspects.flag({x, y}, BadColumn, far);
        }
}

} // namespace velmo::camera

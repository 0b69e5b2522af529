#include "camera/pixels/OddSpots.h"
#include "camera/pixels/Robust.h"
#include "camera/pixels/SearchRules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

namespace velmo::camera {
namespace {

/// How a pixel differs from those of two other rows.
using Away = std::array<float, 2>;

/// How a row differs from its neighbours.
struct Difference
{
    float mean = 0; ///< the median along the row
    float both = 0; ///< from the nearer one, where both differ to the same side: horizons and borders do not
    float sameSide = 0;    ///< part of the pixels that differ to the side on which most do
    float outstanding = 0; ///< part of the pixels that are defective, or far from both
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
    static constexpr int farPixel = 8;  ///< deviations
    static constexpr float farRow = 8;  ///< usual differences
    static constexpr float farEdge = 4; ///< deviations: the outermost rows of many cameras are off a little
    static constexpr float mostPixels = 0.8F;  ///< of a row on one side
    static constexpr float manyPixels = 0.15F; ///< outstanding, more than usual
    static constexpr float leastUsual = 0.15F; ///< rounding and the like
    static constexpr float leak = 0.15F;       ///< into the rows beside it: that is a thing of the scene

    std::optional<Away> away(int row, int x) const;
    Difference differenceOf(int row) const;
    float step(int from, int to) const;
    bool leaks(int row, float both) const;
    bool isEdge(int row) const { return row == 0 || row == m_oPlane.rows - 1; }
    bool isClear(int row, float both) const;

    const Plane& m_oPlane;
    const Mask& m_oBad;
    const Plane& m_oDeviation;
};

/// From both sides; at an edge from the two rows beside it. Nothing where one of those is defective.
std::optional<Away> Lines::away(int row, int x) const
{
    const int one = row == 0 ? 1 : row - 1, other = row == 0 ? 2 : isEdge(row) ? row - 2 : row + 1;
    if (m_oBad(one, x) != 0 || m_oBad(other, x) != 0)
        return {};
    return Away{m_oPlane(row, x) - m_oPlane(one, x), m_oPlane(row, x) - m_oPlane(other, x)};
}

/// The lesser where both are on one side, or else 0.
float nearer(const Away& away)
{
    if (away[0] * away[1] <= 0)
        return 0;
    return std::abs(away[0]) < std::abs(away[1]) ? away[0] : away[1];
}

Difference Lines::differenceOf(int row) const
{
    std::array<std::vector<float>, 2> from;
    std::vector<float> means;
    int total = 0, outstanding = 0, up = 0;
    for (int x = 0; x < m_oPlane.cols; ++x) {
        const bool bad = m_oBad(row, x) != 0;
        const auto differences = bad ? std::nullopt : away(row, x);
        total += bad || differences ? 1 : 0;
        if (!differences)
            continue;
        for (std::size_t n = 0; n < from.size(); ++n)
            from[n].push_back((*differences)[n]);
        means.push_back(((*differences)[0] + (*differences)[1]) / 2);
        up += means.back() > 0 ? 1 : 0;
        outstanding += std::abs(nearer(*differences)) > farPixel * m_oDeviation(row, x) ? 1 : 0;
    }
    if (means.size() < 8)
        return {};
    const auto count = static_cast<float>(means.size());
    return {medianOf(means), nearer({medianOf(from[0]), medianOf(from[1])}),
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

/// Enough for a row that has neighbours on one side alone.
bool Lines::isClear(int row, float both) const
{
    std::vector<float> deviations(m_oDeviation[row], m_oDeviation[row] + m_oDeviation.cols);
    return std::abs(both) > farEdge * medianOf(deviations);
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
        const bool off = std::abs(out) > farRow && difference.sameSide > mostPixels &&
                         !leaks(row, difference.both) && (!isEdge(row) || isClear(row, difference.both));
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

// The search for good neighbours: by a list of offsets for one pixel, line by line for a whole map.

#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"
#include "vision/kernels/BadPixelKernel.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstdint>
#include <new>
#include <tuple>

namespace velmo::exp::vision {
namespace {

constexpr int maxOffset = 32767; // offsets are 16-bit values

/// Single precision, as it decides what is within the radius and what comes first. Both are at most 32768.
float distance(int a, int b)
{
    return std::sqrt(
        static_cast<float>(std::uint32_t(a) * std::uint32_t(a) + std::uint32_t(b) * std::uint32_t(b)));
}

void checkRadius(int radius)
{
    if (radius > maxOffset)
        VELMO_THROW("Search radius " + std::to_string(radius) + " is above the limit of " +
                    std::to_string(maxOffset) + "!");
}

/// One of the four rotations of the quarter disc a >= 1, b >= 0.
Pixel rotated(int slot, int a, int b)
{
    const int offsets[4][2] = {{a, b}, {-b, a}, {b, -a}, {-a, -b}};
    return {static_cast<short>(offsets[slot][0]), static_cast<short>(offsets[slot][1])};
}

/// The quarter disc of slot 0, nearest first; of equal distances the smaller a, then the smaller b first.
std::vector<std::pair<float, Pixel>> quarterDisc(int radius)
{
    const auto limit = static_cast<float>(radius);
    std::vector<std::pair<float, Pixel>> disc;
    // Room at once: growing needs up to three times as much. Memory that the disc has no use for is not
    // touched.
    disc.reserve(static_cast<std::size_t>(0.8 * radius * radius) + 2 * static_cast<std::size_t>(radius) + 1);
    for (int a = 1; a <= radius; ++a)
        for (int b = 0; b <= radius && distance(a, b) <= limit; ++b)
            disc.emplace_back(distance(a, b), rotated(0, a, b));
    std::stable_sort(disc.begin(), disc.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    return disc;
}

BadPixelTools::ReplacePixelQuery buildQuery(int radius)
{
    BadPixelTools::ReplacePixelQuery query;
    query[0] = quarterDisc(radius);
    for (int slot = 1; slot < 4; ++slot) {
        auto& list = query[static_cast<std::size_t>(slot)];
        list.reserve(query[0].size());
        for (const auto& [away, offset] : query[0])
            list.emplace_back(away, rotated(slot, offset.x, offset.y));
    }
    return query;
}

/// Slots without a pixel of their own take another's, those on their sides first. False if no slot has one.
bool fillMissing(BadPixel& badPixel, std::bitset<4> found)
{
    constexpr std::size_t substitutes[4][3] = {{2, 3, 1}, {3, 0, 2}, {0, 1, 3}, {1, 2, 0}};
    for (std::size_t slot = 0; slot < 4; ++slot) {
        if (found[slot])
            continue;
        const auto* from = std::find_if(std::begin(substitutes[slot]), std::end(substitutes[slot]),
                                        [&found](std::size_t other) { return found[other]; });
        if (from == std::end(substitutes[slot]))
            return false;
        badPixel.replacePixel[slot] = badPixel.replacePixel[*from];
        found.set(slot);
    }
    return true;
}

/// The nearest good pixel of a row to the right or to the left of a column.
class GoodPixels
{
public:
    explicit GoodPixels(const cv::Mat_<int>& map) : m_oMap(map), m_vecRows(static_cast<std::size_t>(map.rows))
    {}

    /// First good column from `column` on in steps of `step`, which is 1 or -1; -1 if there is none.
    int from(int row, int column, int step)
    {
        // Mostly the first one is good. A long run of bad ones is walked once for all that ask.
        const int* pixels = m_oMap[row];
        for (int probes = 0; probes < 8 && column >= 0 && column < m_oMap.cols; ++probes, column += step)
            if (pixels[column] == 0)
                return column;
        if (column < 0 || column >= m_oMap.cols)
            return -1;
        const Row& nearest = prepared(row);
        return (step > 0 ? nearest.right : nearest.left)[static_cast<std::size_t>(column)];
    }

private:
    struct Row
    {
        std::vector<int> left, right;
    };

    const Row& prepared(int row)
    {
        Row& nearest = m_vecRows[static_cast<std::size_t>(row)];
        if (nearest.left.empty()) {
            const auto count = static_cast<std::size_t>(m_oMap.cols);
            const int* pixels = m_oMap[row];
            nearest.left.resize(count);
            nearest.right.resize(count);
            for (std::size_t c = 0; c < count; ++c)
                nearest.left[c] = pixels[c] == 0 ? static_cast<int>(c) : c > 0 ? nearest.left[c - 1] : -1;
            for (std::size_t c = count; c-- > 0;)
                nearest.right[c] = pixels[c] == 0  ? static_cast<int>(c)
                                   : c + 1 < count ? nearest.right[c + 1]
                                                   : -1;
        }
        return nearest;
    }

    const cv::Mat_<int>& m_oMap;
    std::vector<Row> m_vecRows;
};

/// One way along a line of the map, counted in 16 bits: positions beyond 32767 are negative, and a step below
/// -32768 leads to 32767. So a search from there comes upon the first positions of the line, or, backwards,
/// upon its last ones, as if it went round a ring.
struct Way
{
    /// @param count  positions of the line that can be found: 32768 at most
    Way(short from, int step, int first, int count) : s32Step(step)
    {
        const int start = from + step * first;
        s32Start = start >= 0 ? start : step > 0 ? 0 : std::min(start + 65536, count - 1);
        s32Origin = start < 0 && step < 0 ? from + 65536 : from;
        s32Least = s32Start < count ? distanceTo(s32Start) : maxOffset + 1;
    }

    /// How far away a position is; more than any radius where the search does not get to it.
    int distanceTo(int position) const { return s32Step * (position - s32Origin); }

    int s32Step;
    int s32Start;  ///< the first position of the line that can be found
    int s32Origin; ///< where the search comes from
    int s32Least;  ///< the distance of the first position
};

/// What a search came to.
enum class Outcome
{
    found,
    nothing,
    undecided
};

/// Where a slot looks for its pixel.
struct Quadrant
{
    int stepX, stepY;   ///< direction of growing columns and rows
    int firstX, firstY; ///< the smallest offsets in these directions; a is the one that begins at 1
};
constexpr Quadrant quadrants[4] = {{1, 1, 1, 0}, {-1, 1, 0, 1}, {1, -1, 0, 1}, {-1, -1, 1, 0}};

/// The nearest pixels of all in the quadrants.
constexpr Pixel neighbours[4] = {{1, 0}, {0, 1}, {0, -1}, {-1, 0}};

/// Which row has the nearest good pixel of a quadrant, asked row after row against the quadrant's direction.
/// The squared distance to the good pixel of a row is a parabola over the rows of those who ask; of two, that
/// of the row added later becomes the lesser one for good from some row on. So rows wait in the order in
/// which they come to be the nearest, and the others are dropped.
class NearestRows
{
public:
    explicit NearestRows(const Quadrant& quadrant) : m_oQuadrant(quadrant) {}

    /// @param dx  how far away the good pixel of that row is
    void add(int row, int dx)
    {
        const std::int64_t place = std::int64_t(row) * m_oQuadrant.stepY;
        const Candidate candidate{place, place * place + std::int64_t(dx) * dx, row, dx};
        while (m_aCandidates.size() >= m_uFirst + 2 &&
               takesOver(candidate, m_aCandidates.back()) >=
                   takesOver(m_aCandidates.back(), m_aCandidates[m_aCandidates.size() - 2]))
            m_aCandidates.pop_back();
        m_aCandidates.push_back(candidate);
    }

    struct Candidate
    {
        std::int64_t place;   ///< the row, counted in the quadrant's direction
        std::int64_t squares; ///< of place and dx, summed up
        int row, dx;
    };

    /// For a pixel of a row; nullptr if no row has one.
    const Candidate* nearest(int row)
    {
        const std::int64_t place = std::int64_t(row) * m_oQuadrant.stepY;
        while (m_aCandidates.size() >= m_uFirst + 2 &&
               place <= takesOver(m_aCandidates[m_uFirst + 1], m_aCandidates[m_uFirst]))
            ++m_uFirst;
        return m_aCandidates.size() > m_uFirst ? &m_aCandidates[m_uFirst] : nullptr;
    }

private:
    /// The last place from which the later one is nearer than the earlier. At the same distance the lists
    /// have the smaller a first: that of the earlier one if a counts columns.
    std::int64_t takesOver(const Candidate& later, const Candidate& earlier) const
    {
        const std::int64_t rise = earlier.squares - later.squares - m_oQuadrant.firstX;
        const std::int64_t run = 2 * (earlier.place - later.place);
        return rise >= 0 ? rise / run : -((run - 1 - rise) / run);
    }

    Quadrant m_oQuadrant;
    std::vector<Candidate> m_aCandidates;
    std::size_t m_uFirst = 0;
};

/// Finds what the lists of offsets find, without the lists: of a row only its nearest good pixel can be the
/// nearest of a quadrant, so a search costs as many rows as its result is away, not the area between; and a
/// column of many searches costs as many as it has.
class QuadrantSearch
{
public:
    QuadrantSearch(const cv::Mat_<int>& map, int radius)
        : m_oMap(map(cv::Range(0, std::min(map.rows, maxOffset + 1)),
                     cv::Range(0, std::min(map.cols, maxOffset + 1)))),
          m_bRings(m_oMap.size() != map.size()), m_oGoodPixels(m_oMap), m_s32Radius(radius),
          m_fRadius(static_cast<float>(radius))
    {}

    /// Fills the slots from the neighbours, if all four are good. Almost always they are.
    bool takeNeighbours(BadPixel& badPixel) const
    {
        const int x = badPixel.pixel.x, y = badPixel.pixel.y;
        if (m_s32Radius < 1 || x < 1 || x + 1 >= m_oMap.cols || y < 1 || y + 1 >= m_oMap.rows)
            return false;
        const int* at = m_oMap[y] + x;
        if ((at[1] | at[-1] | m_oMap[y + 1][x] | m_oMap[y - 1][x]) != 0)
            return false;
        for (std::size_t slot = 0; slot < 4; ++slot)
            badPixel.replacePixel[slot] = neighbour(badPixel, slot);
        return true;
    }

    /// Fills the slots; undecided if one would have to look at more rows. Nothing if no quadrant has a good
    /// pixel.
    Outcome fill(BadPixel& badPixel, int mostRows)
    {
        std::bitset<4> found;
        for (std::size_t slot = 0; slot < 4; ++slot) {
            const Outcome outcome =
                takeNeighbour(badPixel, slot) ? Outcome::found : search(badPixel, slot, mostRows);
            if (outcome == Outcome::undecided)
                return outcome;
            found[slot] = outcome == Outcome::found;
        }
        return found.all() || fillMissing(badPixel, found) ? Outcome::found : Outcome::nothing;
    }

    /// Fills the slots of pixels of one column, from above to below. False if one finds nothing.
    bool fillColumn(const std::vector<BadPixel*>& badPixels)
    {
        const int top = std::max(badPixels.front()->pixel.y - m_s32Radius, 0);
        const int bottom = std::min(badPixels.back()->pixel.y + m_s32Radius, m_oMap.rows - 1);
        // Squares have to tell what distances in single precision tell.
        constexpr int mostRadius = 2047;
        const bool bColumn =
            !m_bRings && m_s32Radius <= mostRadius && std::size_t(bottom - top) < 16 * badPixels.size();
        if (!bColumn)
            return std::all_of(badPixels.begin(), badPixels.end(), [this](BadPixel* badPixel) {
                return fill(*badPixel, m_oMap.rows) == Outcome::found;
            });
        std::vector<std::bitset<4>> found(badPixels.size());
        for (std::size_t slot = 0; slot < 4; ++slot)
            searchColumn(badPixels, slot, top, bottom, found);
        for (std::size_t n = 0; n < badPixels.size(); ++n)
            if (!found[n].all() && !fillMissing(*badPixels[n], found[n]))
                return false;
        return true;
    }

private:
    static Pixel neighbour(const BadPixel& badPixel, std::size_t slot)
    {
        return {static_cast<short>(badPixel.pixel.x + neighbours[slot].x),
                static_cast<short>(badPixel.pixel.y + neighbours[slot].y)};
    }

    bool takeNeighbour(BadPixel& badPixel, std::size_t slot) const
    {
        const int x = badPixel.pixel.x + neighbours[slot].x, y = badPixel.pixel.y + neighbours[slot].y;
        if (m_s32Radius < 1 || x < 0 || x >= m_oMap.cols || y < 0 || y >= m_oMap.rows || m_oMap(y, x) != 0)
            return false;
        badPixel.replacePixel[slot] = neighbour(badPixel, slot);
        return true;
    }

    Outcome search(BadPixel& badPixel, std::size_t slot, int mostRows)
    {
        const Quadrant& quadrant = quadrants[slot];
        const Way across(badPixel.pixel.x, quadrant.stepX, quadrant.firstX, m_oMap.cols);
        const Way down(badPixel.pixel.y, quadrant.stepY, quadrant.firstY, m_oMap.rows);
        std::tuple<float, int, int> best(m_fRadius, maxOffset + 1, 0); // the order of the lists
        Outcome outcome = Outcome::nothing;
        for (int row = down.s32Start; row >= 0 && row < m_oMap.rows; row += quadrant.stepY) {
            const int dy = down.distanceTo(row);
            if (std::max(across.s32Least, dy) > m_s32Radius ||
                distance(across.s32Least, dy) > std::get<0>(best))
                break;
            if (mostRows-- == 0)
                return Outcome::undecided;
            const int column = m_oGoodPixels.from(row, across.s32Start, quadrant.stepX);
            const int dx = column < 0 ? maxOffset + 1 : across.distanceTo(column);
            if (dx > m_s32Radius)
                continue;
            const std::tuple<float, int, int> candidate(distance(dx, dy), quadrant.firstX == 1 ? dx : dy,
                                                        quadrant.firstX == 1 ? dy : dx);
            if (candidate < best) {
                best = candidate;
                badPixel.replacePixel[slot] = {static_cast<short>(column), static_cast<short>(row)};
                outcome = Outcome::found;
            }
        }
        return outcome;
    }

    /// One slot of pixels of one column, with the good pixels of the rows from `top` to `bottom`.
    void searchColumn(const std::vector<BadPixel*>& badPixels, std::size_t slot, int top, int bottom,
                      std::vector<std::bitset<4>>& found)
    {
        const Quadrant& quadrant = quadrants[slot];
        const int x = badPixels.front()->pixel.x, from = x + quadrant.stepX * quadrant.firstX;
        NearestRows rows(quadrant);
        int next = quadrant.stepY > 0 ? bottom : top;
        for (std::size_t k = 0; k < badPixels.size(); ++k) {
            const std::size_t n = quadrant.stepY > 0 ? badPixels.size() - 1 - k : k;
            BadPixel& badPixel = *badPixels[n];
            const int y = badPixel.pixel.y;
            for (; (next - y) * quadrant.stepY >= quadrant.firstY; next -= quadrant.stepY) {
                const int column = m_oGoodPixels.from(next, from, quadrant.stepX);
                if (column >= 0)
                    rows.add(next, std::abs(column - x));
            }
            const NearestRows::Candidate* nearest = rows.nearest(y);
            if (!nearest)
                continue;
            const int dx = nearest->dx, dy = std::abs(nearest->row - y);
            if (dx * dx + dy * dy > m_s32Radius * m_s32Radius)
                continue;
            badPixel.replacePixel[slot] = {static_cast<short>(x + quadrant.stepX * dx),
                                           static_cast<short>(nearest->row)};
            found[n].set(slot);
        }
    }

    const cv::Mat_<int> m_oMap; ///< what 16 bits reach of the map
    bool m_bRings;              ///< which is less than all: see Way
    GoodPixels m_oGoodPixels;
    int m_s32Radius;
    float m_fRadius;
};

/// Fills the slots of pixels in the order of rows. False if one finds nothing.
bool fillColumns(QuadrantSearch& search, std::vector<BadPixel*>& badPixels)
{
    std::stable_sort(badPixels.begin(), badPixels.end(), [](const BadPixel* left, const BadPixel* right) {
        return left->pixel.x < right->pixel.x;
    });
    std::vector<BadPixel*> column;
    for (auto next = badPixels.begin(); next != badPixels.end();) {
        const auto end = std::find_if(
            next, badPixels.end(), [&](const BadPixel* other) { return other->pixel.x != (*next)->pixel.x; });
        column.assign(next, end);
        if (!search.fillColumn(column))
            return false;
        next = end;
    }
    return true;
}

/// The radius that is worth searching: nothing of the map is farther away than its diagonal.
int usefulRadius(const cv::Mat_<int>& map, unsigned int radius)
{
    const double diagonal = std::hypot(map.rows - 1.0, map.cols - 1.0);
    const int wanted = static_cast<int>(std::min<double>(static_cast<int>(radius), std::ceil(diagonal)));
    checkRadius(wanted);
    return wanted;
}

void checkPositions(const std::vector<BadPixel>& badPixels, const cv::Mat_<int>& map)
{
    for (const BadPixel& badPixel : badPixels) {
        const int x = badPixel.pixel.x, y = badPixel.pixel.y;
        if (x < 0 || x >= map.cols || y < 0 || y >= map.rows)
            VELMO_THROW("Bad pixel x=" + std::to_string(x) + " y=" + std::to_string(y) +
                        " is outside the map of " + std::to_string(map.cols) + " x " +
                        std::to_string(map.rows) + "!");
    }
}

} // namespace

BadPixelTools::ReplacePixelQuery BadPixelTools::computeReplacePixelQuery(int radius)
{
    checkRadius(radius);
    if (radius < 1)
        return {};
    try {
        return buildQuery(radius);
    } catch (const std::bad_alloc&) {
        VELMO_THROW("No memory for the offsets within a radius of " + std::to_string(radius) + "!");
    }
}

bool BadPixelTools::calculateSingleReplacePixel(const cv::Mat_<int>& map, const ReplacePixelQuery& query,
                                                BadPixel& badPixel)
{
    std::bitset<4> found;
    for (std::size_t slot = 0; slot < 4; ++slot)
        for (const auto& [away, offset] : query[slot]) {
            const Pixel candidate{static_cast<short>(badPixel.pixel.x + offset.x),
                                  static_cast<short>(badPixel.pixel.y + offset.y)};
            if (candidate.x >= 0 && candidate.x < map.cols && candidate.y >= 0 && candidate.y < map.rows &&
                map(candidate.y, candidate.x) == 0) {
                badPixel.replacePixel[slot] = candidate;
                found.set(slot);
                break;
            }
        }
    if (found.none())
        return false;
    if (!fillMissing(badPixel, found))
        VELMO_THROW("PROGRAMM ERROR!");
    return true;
}

std::vector<BadPixel> BadPixelTools::calculateReplacePixels(const cv::Mat_<int>& map, unsigned int radius)
{
    std::vector<BadPixel> records;
    const int count = cv::countNonZero(map);
    if (count == 0)
        return records;
    records.resize(static_cast<std::size_t>(count));
    QuadrantSearch search(map, usefulRadius(map, radius));
    std::vector<BadPixel*> far; // those whose replacements are many rows away
    std::vector<int> columns(static_cast<std::size_t>(map.cols));
    BadPixel* record = records.data();
    for (int row = 0; row < map.rows; ++row) {
        const int bad = findBad(map[row], columns.data(), map.cols);
        for (int n = 0; n < bad; ++n, ++record) {
            record->pixel = {static_cast<short>(columns[static_cast<std::size_t>(n)]),
                             static_cast<short>(row)};
            if (search.takeNeighbours(*record))
                continue;
            const Outcome outcome = search.fill(*record, 8);
            if (outcome == Outcome::undecided)
                far.push_back(record);
            else if (outcome == Outcome::nothing)
                VELMO_THROW("At least for one bad pixel no replace pixel could be found!");
        }
    }
    if (!fillColumns(search, far))
        VELMO_THROW("At least for one bad pixel no replace pixel could be found!");
    return records;
}

std::vector<BadPixel> BadPixelTools::recalculateReplacePixels(std::vector<BadPixel> badPixels,
                                                              cv::Mat_<int>& map, unsigned int radius)
{
    checkPositions(badPixels, map);
    if (!badPixels.empty())
        usefulRadius(map, radius); // refused before the map changes
    for (const BadPixel& badPixel : badPixels)
        map(badPixel.pixel.y, badPixel.pixel.x) = static_cast<int>(u32BadHomogenity);
    return calculateReplacePixels(map, radius);
}

} // namespace velmo::exp::vision

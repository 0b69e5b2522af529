// The search for good neighbours: by a list of offsets for one pixel, line by line for a whole map.

#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"

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

/// Finds what the lists of offsets find, without the lists: of a row only its nearest good pixel can be the
/// nearest of a quadrant, so a search costs as many rows as its result is away, not the area between.
class QuadrantSearch
{
public:
    QuadrantSearch(const cv::Mat_<int>& map, int radius)
        : m_oMap(map(cv::Range(0, std::min(map.rows, maxOffset + 1)),
                     cv::Range(0, std::min(map.cols, maxOffset + 1)))),
          m_oGoodPixels(m_oMap), m_s32Radius(radius), m_fRadius(static_cast<float>(radius))
    {}

    /// Fills the slots; false if no quadrant has a good pixel.
    bool fill(BadPixel& badPixel)
    {
        std::bitset<4> found;
        for (std::size_t slot = 0; slot < 4; ++slot) // almost always the neighbours do
            found[slot] = takeNeighbour(badPixel, slot) || search(badPixel, slot);
        return found.all() || fillMissing(badPixel, found);
    }

private:
    /// Where a slot looks for its pixel.
    struct Quadrant
    {
        int stepX, stepY;   ///< direction of growing columns and rows
        int firstX, firstY; ///< the smallest offsets in these directions; a is the one that begins at 1
    };

    /// The nearest pixel of all in a quadrant.
    bool takeNeighbour(BadPixel& badPixel, std::size_t slot) const
    {
        constexpr Pixel steps[4] = {{1, 0}, {0, 1}, {0, -1}, {-1, 0}};
        const Pixel step = steps[slot];
        const int x = badPixel.pixel.x + step.x, y = badPixel.pixel.y + step.y;
        if (m_s32Radius < 1 || x < 0 || x >= m_oMap.cols || y < 0 || y >= m_oMap.rows || m_oMap(y, x) != 0)
            return false;
        badPixel.replacePixel[slot] = {static_cast<short>(x), static_cast<short>(y)};
        return true;
    }

    bool search(BadPixel& badPixel, std::size_t slot)
    {
        constexpr Quadrant quadrants[4] = {{1, 1, 1, 0}, {-1, 1, 0, 1}, {1, -1, 0, 1}, {-1, -1, 1, 0}};
        const Quadrant& quadrant = quadrants[slot];
        const Way across(badPixel.pixel.x, quadrant.stepX, quadrant.firstX, m_oMap.cols);
        const Way down(badPixel.pixel.y, quadrant.stepY, quadrant.firstY, m_oMap.rows);
        std::tuple<float, int, int> best(m_fRadius, maxOffset + 1, 0); // the order of the lists
        bool found = false;
        for (int row = down.s32Start; row >= 0 && row < m_oMap.rows; row += quadrant.stepY) {
            const int dy = down.distanceTo(row);
            if (std::max(across.s32Least, dy) > m_s32Radius ||
                distance(across.s32Least, dy) > std::get<0>(best))
                break;
            const int column = m_oGoodPixels.from(row, across.s32Start, quadrant.stepX);
            const int dx = column < 0 ? maxOffset + 1 : across.distanceTo(column);
            if (dx > m_s32Radius)
                continue;
            const std::tuple<float, int, int> candidate(distance(dx, dy), quadrant.firstX == 1 ? dx : dy,
                                                        quadrant.firstX == 1 ? dy : dx);
            if (candidate < best) {
                best = candidate;
                badPixel.replacePixel[slot] = {static_cast<short>(column), static_cast<short>(row)};
                found = true;
            }
        }
        return found;
    }

    const cv::Mat_<int> m_oMap; ///< what 16 bits reach of the map
    GoodPixels m_oGoodPixels;
    int m_s32Radius;
    float m_fRadius;
};

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
    records.reserve(static_cast<std::size_t>(count));
    QuadrantSearch search(map, usefulRadius(map, radius));
    for (int row = 0; row < map.rows; ++row) {
        const int* pixels = map[row];
        for (int column = 0; column < map.cols; ++column) {
            if (pixels[column] == 0)
                continue;
            BadPixel& record = records.emplace_back();
            record.pixel = {static_cast<short>(column), static_cast<short>(row)};
            if (!search.fill(record))
                VELMO_THROW("At least for one bad pixel no replace pixel could be found!");
        }
    }
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

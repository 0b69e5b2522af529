#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace velmo::exp::vision;
using velmo::exp::Exception;

namespace {

using Map = cv::Mat_<int>;
using Query = BadPixelTools::ReplacePixelQuery;
using Offsets = std::vector<std::pair<int, int>>;

Offsets offsetsOf(const Query& query, std::size_t slot)
{
    Offsets offsets;
    for (const auto& entry : query[slot])
        offsets.emplace_back(entry.second.x, entry.second.y);
    return offsets;
}

/// The position and the four slots, each as "x,y".
std::string text(const BadPixel& record)
{
    std::string all = std::to_string(record.pixel.x) + "," + std::to_string(record.pixel.y) + ":";
    for (const Pixel& pixel : record.replacePixel)
        all += " " + std::to_string(pixel.x) + "," + std::to_string(pixel.y);
    return all;
}

std::vector<std::string> text(const std::vector<BadPixel>& records)
{
    std::vector<std::string> all;
    all.reserve(records.size());
    for (const BadPixel& record : records)
        all.push_back(text(record));
    return all;
}

std::vector<std::string> replaced(const Map& map, unsigned int radius)
{
    return text(BadPixelTools::calculateReplacePixels(map, radius));
}

using Lines = std::vector<std::string>;

/// Pixel by pixel through the lists of offsets; empty if one finds nothing.
std::vector<BadPixel> byLists(const Map& map, int radius)
{
    const Query query = BadPixelTools::computeReplacePixelQuery(radius);
    std::vector<BadPixel> records;
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (map(y, x) != 0) {
                BadPixel record{{static_cast<short>(x), static_cast<short>(y)}, {}};
                if (!BadPixelTools::calculateSingleReplacePixel(map, query, record))
                    return {};
                records.push_back(record);
            }
    return records;
}

/// Bad with the given probability, in runs along the lines.
Map randomMap(std::mt19937& random, cv::Size size, double density, int run)
{
    Map map(size, 0);
    std::bernoulli_distribution bad(density / run);
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (bad(random))
                for (int n = x; n < std::min(x + run, map.cols); ++n)
                    map(y, n) = n % 2 ? 16 : -1;
    return map;
}

std::string messageOf(const Map& map, unsigned int radius)
{
    try {
        BadPixelTools::calculateReplacePixels(map, radius);
    } catch (const Exception& error) {
        EXPECT_THAT(error.location(), testing::HasSubstr(": calculateReplacePixels(..)\n"));
        return error.what();
    }
    return "";
}

const std::string mg_strNothingFound = "At least for one bad pixel no replace pixel could be found!";

} // namespace

TEST(BadPixelQuery, ListsTheFourRotationsOfAQuarterDisc)
{
    for (const int radius : {-5, 0})
        for (std::size_t slot = 0; slot < 4; ++slot)
            EXPECT_TRUE(BadPixelTools::computeReplacePixelQuery(radius)[slot].empty());

    const Query query = BadPixelTools::computeReplacePixelQuery(2);
    EXPECT_EQ(offsetsOf(query, 0), (Offsets{{1, 0}, {1, 1}, {2, 0}}));
    EXPECT_EQ(offsetsOf(query, 1), (Offsets{{0, 1}, {-1, 1}, {0, 2}}));
    EXPECT_EQ(offsetsOf(query, 2), (Offsets{{0, -1}, {1, -1}, {0, -2}}));
    EXPECT_EQ(offsetsOf(query, 3), (Offsets{{-1, 0}, {-1, -1}, {-2, 0}}));
    EXPECT_EQ(query[3][1].first, 1.4142135F);

    // At distance 5 the smaller column comes first.
    const Offsets five = offsetsOf(BadPixelTools::computeReplacePixelQuery(5), 0);
    EXPECT_EQ(Offsets(five.end() - 3, five.end()), (Offsets{{3, 4}, {4, 3}, {5, 0}}));
}

TEST(BadPixelQuery, IsOrderedByTheSinglePrecisionDistance)
{
    // Beyond 2048 different sums of squares have the same distance and keep the order of insertion; only
    // there is the large disc compared.
    for (const int radius : {1, 7, 60, 2200}) {
        const float from = radius > 2000 ? 2150.F : 0.F;
        std::multimap<float, std::pair<int, int>> disc;
        for (int a = 1; a <= radius; ++a)
            for (int b = 0; b <= radius; ++b) {
                const float d = std::sqrt(static_cast<float>(a * a + b * b));
                if (static_cast<float>(radius) >= d && d >= from)
                    disc.emplace(d, std::pair(a, b));
            }
        const Query query = BadPixelTools::computeReplacePixelQuery(radius);
        const auto& list = query[0];
        const auto begin =
            std::find_if(list.begin(), list.end(), [&](const auto& e) { return e.first >= from; });
        ASSERT_TRUE(std::equal(begin, list.end(), disc.begin(), disc.end(),
                               [](const auto& ours, const auto& theirs) {
                                   return ours.first == theirs.first &&
                                          std::pair<int, int>(ours.second.x, ours.second.y) == theirs.second;
                               }))
            << "radius " << radius;
    }
}

TEST(BadPixelQuery, IsRefusedWhereOffsetsLeave16Bits)
{
    EXPECT_THROW(BadPixelTools::computeReplacePixelQuery(32768), Exception);
    EXPECT_THROW(BadPixelTools::computeReplacePixelQuery(std::numeric_limits<int>::max()), Exception);
}

TEST(BadPixelReplacement, TakesTheNearestGoodPixelOfEachQuadrant)
{
    Map map(5, 6, 0);
    map(2, 3) = 64;
    EXPECT_EQ(replaced(map, 1), Lines{"3,2: 4,2 3,3 3,1 2,2"});
    // Right: of (4,3) and (5,2) the nearer. Below, left and above: what lies clockwise next.
    map(2, 4) = map(3, 3) = map(2, 2) = map(1, 3) = -7;
    EXPECT_EQ(replaced(map, 2)[2], "3,2: 4,3 2,3 4,1 2,1");
}

TEST(BadPixelReplacement, BorrowsForASideWithoutAGoodPixel)
{
    Map map(3, 3, 0);
    map(0, 0) = 1;
    EXPECT_EQ(replaced(map, 1), Lines{"0,0: 1,0 0,1 1,0 0,1"});
    map = 0;
    map(2, 2) = 1;
    EXPECT_EQ(replaced(map, 1), Lines{"2,2: 2,1 1,2 2,1 1,2"});
    map = 0;
    map(1, 0) = map(1, 1) = 1;
    EXPECT_EQ(replaced(map, 1), (Lines{"0,1: 0,0 0,2 0,0 0,2", "1,1: 2,1 1,2 1,0 1,2"}));
    // One good pixel in all, for each slot in turn.
    for (const auto& [x, y] : {std::pair(2, 1), {0, 2}, {1, 0}, {0, 1}}) {
        map = 1;
        map(y, x) = 0;
        const Pixel one{static_cast<short>(x), static_cast<short>(y)};
        EXPECT_EQ(replaced(map, 3)[x + 3 * y < 4 ? 3 : 4], text(BadPixel{{1, 1}, {one, one, one, one}}));
    }
}

TEST(BadPixelReplacement, FailsWithoutAGoodPixelInReach)
{
    const Map good(4, 4, 0), bad(4, 4, 2);
    Map single(4, 4, 0), far(1, 9, 2);
    single(1, 1) = 1;
    far(0, 8) = 0;
    for (const unsigned int radius : {0U, 0x80000000U, 0xffffffffU}) {
        EXPECT_TRUE(replaced(good, radius).empty());
        EXPECT_EQ(messageOf(single, radius), mg_strNothingFound);
    }
    EXPECT_EQ(messageOf(bad, 100), mg_strNothingFound);
    EXPECT_EQ(messageOf(far, 7), mg_strNothingFound);
    EXPECT_EQ(replaced(far, 8).size(), 8U);
    EXPECT_TRUE(replaced(Map(), 5).empty());
}

TEST(BadPixelReplacement, LeavesARecordThatFindsNothingAsItWas)
{
    BadPixel record{{1, 1}, {{9, 8}, {7, 6}, {5, 4}, {3, 2}}};
    const Query query = BadPixelTools::computeReplacePixelQuery(2);
    EXPECT_FALSE(BadPixelTools::calculateSingleReplacePixel(Map(3, 3, 1), query, record));
    EXPECT_EQ(text(record), "1,1: 9,8 7,6 5,4 3,2");
    // Far outside a map no 16-bit offset leads into it by wrapping over.
    record.pixel = {32767, 32767};
    EXPECT_FALSE(BadPixelTools::calculateSingleReplacePixel(Map(3, 3, 0), query, record));
}

TEST(BadPixelReplacement, FindsLineByLineWhatTheListsFind)
{
    std::mt19937 random(11);
    for (const cv::Size size : {cv::Size(1, 1), {40, 1}, {1, 40}, {2, 3}, {17, 9}, {64, 48}})
        for (const int run : {1, 5, 30})
            for (const double density : {0.02, 0.3, 0.8, 0.98})
                for (const int radius : {1, 2, 5, 20, 81}) {
                    // A part of a larger map: rows are padded.
                    const Map map = randomMap(random, {size.width + 3, size.height + 2}, density,
                                              run)(cv::Rect({2, 1}, size));
                    const Lines expected = text(byLists(map, radius));
                    if (expected.empty() && cv::countNonZero(map) > 0)
                        ASSERT_EQ(messageOf(map, static_cast<unsigned>(radius)), mg_strNothingFound);
                    else
                        ASSERT_EQ(replaced(map, static_cast<unsigned>(radius)), expected)
                            << size << " run " << run << " density " << density << " radius " << radius;
                }
}

TEST(BadPixelReplacement, FindsInMapsBeyond16BitsWhatTheListsFind)
{
    // Positions read from 16 bits make a ring of every line; runs of bad pixels lie across its seams.
    std::mt19937 random(13);
    for (const cv::Size size : {cv::Size(70000, 2), {2, 70000}, {32769, 3}, {3, 32800}, {33000, 1}})
        for (const int radius : {1, 20, 300}) {
            Map map(size, 0);
            for (const int seam : {0, 32768, 65536, size.width, size.height})
                for (int n = 0; n < 60; ++n) {
                    const int along = seam + static_cast<int>(random() % 40) - 20;
                    const int x = size.width > size.height ? along : static_cast<int>(random() % size.width);
                    const int y = size.width > size.height ? static_cast<int>(random() % size.height) : along;
                    if (x >= 0 && x < size.width && y >= 0 && y < size.height)
                        map(y, x) = 1;
                }
            const Lines expected = text(byLists(map, radius));
            if (expected.empty())
                EXPECT_EQ(messageOf(map, static_cast<unsigned>(radius)), mg_strNothingFound);
            else
                EXPECT_EQ(replaced(map, static_cast<unsigned>(radius)), expected) << size << ", " << radius;
        }
}

TEST(BadPixelReplacement, HasNothingToFindInACleanMap)
{
    Map wide(1, 40000, 0);
    for (const unsigned int radius : {0U, 8000U, 32768U, 0xffffffffU}) {
        EXPECT_TRUE(replaced(wide, radius).empty());
        EXPECT_TRUE(BadPixelTools::recalculateReplacePixels({}, wide, radius).empty());
    }
    wide(0, 3) = 1; // no list of offsets within 30000 is built for it
    EXPECT_EQ(replaced(wide, 30000), Lines{"3,0: 4,0 2,0 4,0 2,0"});
}

TEST(BadPixelReplacement, FindsTheSameWithARadiusBeyondTheDiagonal)
{
    std::mt19937 random(5);
    const Map map = randomMap(random, {40, 30}, 0.9, 9);
    const Lines expected = text(byLists(map, 50));
    ASSERT_FALSE(expected.empty());
    for (const unsigned int radius : {50U, 1000U, 32767U, 32768U, 0x7fffffffU})
        EXPECT_EQ(replaced(map, radius), expected) << radius;
}

TEST(BadPixelReplacement, CountsPositionsIn16Bits)
{
    Map map(1, 40000, 0);
    map(0, 32767) = 1; // its neighbour at the right would be at -32768
    EXPECT_EQ(replaced(map, 1), Lines{"32767,0: 32766,0 32766,0 32766,0 32766,0"});
    map(0, 32768) = 1;
    EXPECT_EQ(messageOf(map, 1), mg_strNothingFound);
    EXPECT_EQ(replaced(Map(map.colRange(0, 32768)), 40000),
              Lines{"32767,0: 32766,0 32766,0 32766,0 32766,0"});
    EXPECT_THROW(BadPixelTools::calculateReplacePixels(map, 32768), Exception);
}

TEST(BadPixelReplacement, CrossesALargeDefect)
{
    Map map(150, 200, 1);
    map.rowRange(0, 2) = 0;
    const auto records = BadPixelTools::calculateReplacePixels(map, 2000);
    ASSERT_EQ(records.size(), 148U * 200U);
    EXPECT_EQ(text(records.back()), "199,149: 199,1 198,1 199,1 198,1");
}

TEST(BadPixelRecalculation, MarksTheRecordsAndSearchesTheWholeMap)
{
    Map map(3, 4, 0);
    map(2, 3) = 2;
    map(0, 1) = 16;
    const auto records = BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}, {{1, 0}, {}}}, map, 2);
    EXPECT_EQ(map(1, 1), 64);
    EXPECT_EQ(map(0, 1), 64); // in place of the flag, not beside it
    EXPECT_EQ(map(2, 3), 2);
    EXPECT_EQ(text(records), (Lines{"1,0: 2,0 0,1 2,0 0,0", "1,1: 2,1 1,2 2,0 0,1", "3,2: 3,1 2,2 3,1 2,2"}));
}

TEST(BadPixelRecalculation, RefusesAPositionOutsideBeforeItMarks)
{
    for (const Pixel outside : {Pixel{4, 0}, {0, 3}, {-1, 0}, {0, -1}}) {
        Map map(3, 4, 0);
        EXPECT_THROW(BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}, {outside, {}}}, map, 2),
                     Exception);
        EXPECT_EQ(cv::countNonZero(map), 0);
    }
    Map map(3, 4, 0);
    EXPECT_THROW(BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}}, map, 0), Exception);
    EXPECT_EQ(map(1, 1), 64);
}

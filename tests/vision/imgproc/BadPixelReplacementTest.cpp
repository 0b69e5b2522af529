#include "tests/Support.h"
#include "vision/imgproc/BadPixel.h"

using namespace velmo::exp::vision;

using Map = cv::Mat_<int>;
using Query = BadPixelTools::ReplacePixelQuery;
using Offsets = std::vector<std::pair<int, int>>;
using Records = std::vector<BadPixel>;

const Refusal nothingFound{"At least for one bad pixel no replace pixel could be found!",
                           "calculateReplacePixels"};

const auto offsetsOf = [](const Query& query, std::size_t slot) {
    Offsets offsets;
    for (const auto& entry : query[slot])
        offsets.emplace_back(entry.second.x, entry.second.y);
    return offsets;
};

const auto replaced = [](const Map& map, unsigned int radius) {
    return BadPixelTools::calculateReplacePixels(map, radius);
};

const auto refused = [](const Map& map, unsigned int radius) {
    return refusal([&] { replaced(map, radius); });
};

/// A clean map but for some pixels.
const auto badAt = [](cv::Size size, const std::vector<cv::Point>& pixels) {
    Map map(size, 0);
    for (const cv::Point& pixel : pixels)
        map(pixel) = -7;
    return map;
};

/// Holds the search by rows to the lists of offsets.
const auto compare = [](const Map& map, int radius) {
    const Query query = BadPixelTools::computeReplacePixelQuery(radius);
    Records records;
    bool complete = true;
    for (int y = 0; y < map.rows && complete; ++y)
        for (int x = 0; x < map.cols && complete; ++x)
            if (map(y, x) != 0) {
                records.push_back({{static_cast<short>(x), static_cast<short>(y)}, {}});
                complete = BadPixelTools::calculateSingleReplacePixel(map, query, records.back());
            }
    const auto search = [&] { EXPECT_EQ(replaced(map, static_cast<unsigned>(radius)), records); };
    ASSERT_EQ(refusal(search), complete ? Refusal{} : nothingFound) << map.size() << " radius " << radius;
};

/// Bad with the given probability, in runs along the lines; a part of a larger map.
const auto randomMap = [](std::mt19937& random, cv::Size size, double density, int run) -> Map {
    Map map(size + cv::Size(3, 2), 0);
    std::bernoulli_distribution bad(density / run);
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (bad(random))
                for (int n = x; n < std::min(x + run, map.cols); ++n)
                    map(y, n) = n % 2 ? 16 : -1;
    return map(cv::Rect({2, 1}, size));
};

TEST(BadPixelQuery, ListsTheFourRotationsOfAQuarterDisc)
{
    for (const int radius : {-5, 0})
        EXPECT_THAT(BadPixelTools::computeReplacePixelQuery(radius), testing::Each(testing::IsEmpty()));

    const Query query = BadPixelTools::computeReplacePixelQuery(2);
    EXPECT_EQ(offsetsOf(query, 0), (Offsets{{1, 0}, {1, 1}, {2, 0}}));
    EXPECT_EQ(offsetsOf(query, 1), (Offsets{{0, 1}, {-1, 1}, {0, 2}}));
    EXPECT_EQ(offsetsOf(query, 2), (Offsets{{0, -1}, {1, -1}, {0, -2}}));
    EXPECT_EQ(offsetsOf(query, 3), (Offsets{{-1, 0}, {-1, -1}, {-2, 0}}));
    EXPECT_EQ(query[3][1].first, 1.4142135F);

    for (const int radius : {32768, std::numeric_limits<int>::max()}) // offsets would leave 16 bits
        EXPECT_THROW(BadPixelTools::computeReplacePixelQuery(radius), Exception);
}

TEST(BadPixelQuery, IsOrderedByTheSinglePrecisionDistance)
{
    const Offsets near = offsetsOf(BadPixelTools::computeReplacePixelQuery(5), 0);
    EXPECT_EQ(Offsets(near.end() - 3, near.end()),
              (Offsets{{3, 4}, {4, 3}, {5, 0}})); // the smaller column first
    // Beyond 2048 different sums of squares have the same distance and keep the order of insertion.
    const Offsets far = offsetsOf(BadPixelTools::computeReplacePixelQuery(2200), 0);
    EXPECT_LT(std::find(far.begin(), far.end(), (std::pair(438, 2105))),
              std::find(far.begin(), far.end(), (std::pair(2052, 642))));
}

TEST(BadPixelReplacement, TakesTheNearestGoodPixelOfEachQuadrant)
{
    Map map = badAt({6, 5}, {{3, 2}});
    EXPECT_EQ(replaced(map, 1), (Records{{{3, 2}, {{4, 2}, {3, 3}, {3, 1}, {2, 2}}}}));
    // Right: of (4,3) and (5,2) the nearer. Below, left and above: what lies clockwise next.
    map(2, 4) = map(3, 3) = map(2, 2) = map(1, 3) = -7;
    EXPECT_EQ(replaced(map, 2)[2], (BadPixel{{3, 2}, {{4, 3}, {2, 3}, {4, 1}, {2, 1}}}));
}

TEST(BadPixelReplacement, BorrowsForASideWithoutAGoodPixel)
{
    const cv::Size three(3, 3);
    EXPECT_EQ(replaced(badAt(three, {{0, 0}}), 1), (Records{{{0, 0}, {{1, 0}, {0, 1}, {1, 0}, {0, 1}}}}));
    EXPECT_EQ(replaced(badAt(three, {{2, 2}}), 1), (Records{{{2, 2}, {{2, 1}, {1, 2}, {2, 1}, {1, 2}}}}));
    EXPECT_EQ(replaced(badAt(three, {{2, 0}}), 1), (Records{{{2, 0}, {{1, 0}, {2, 1}, {1, 0}, {1, 0}}}}));
    EXPECT_EQ(replaced(badAt(three, {{0, 2}}), 1), (Records{{{0, 2}, {{1, 2}, {1, 2}, {0, 1}, {1, 2}}}}));
    EXPECT_EQ(
        replaced(badAt(three, {{0, 1}, {1, 1}}), 1),
        (Records{{{0, 1}, {{0, 0}, {0, 2}, {0, 0}, {0, 2}}}, {{1, 1}, {{2, 1}, {1, 2}, {1, 0}, {1, 2}}}}));
    // One good pixel in all, for each slot in turn.
    for (const Pixel one : {Pixel{2, 1}, {0, 2}, {1, 0}, {0, 1}}) {
        Map map(3, 3, 1);
        map(one.y, one.x) = 0;
        EXPECT_EQ(replaced(map, 3)[one.x + 3 * one.y < 4 ? 3 : 4], (BadPixel{{1, 1}, {one, one, one, one}}));
    }
}

TEST(BadPixelReplacement, FailsWithoutAGoodPixelInReach)
{
    Map far(1, 9, 2);
    far(0, 8) = 0;
    for (const unsigned int radius : {0U, 0x80000000U, 0xffffffffU})
        EXPECT_EQ(refused(badAt({4, 4}, {{1, 1}}), radius), nothingFound);
    EXPECT_EQ(refused(Map(4, 4, 2), 100), nothingFound);
    EXPECT_EQ(refused(far, 7), nothingFound);
    EXPECT_EQ(replaced(far, 8).size(), 8U);

    // The record stays as it was. Far outside a map no 16-bit offset leads into it by wrapping over.
    const Query query = BadPixelTools::computeReplacePixelQuery(2);
    for (const auto& [map, position] :
         {std::pair(Map(3, 3, 1), Pixel{1, 1}), {Map(3, 3, 0), Pixel{32767, 32767}}}) {
        BadPixel record{position, {{9, 8}, {7, 6}, {5, 4}, {3, 2}}};
        const BadPixel before = record;
        EXPECT_FALSE(BadPixelTools::calculateSingleReplacePixel(map, query, record));
        EXPECT_EQ(record, before);
    }
}

TEST(BadPixelReplacement, HasNothingToFindInACleanMap)
{
    Map wide(1, 40000, 0);
    for (const unsigned int radius : {0U, 8000U, 32768U, 0xffffffffU}) {
        EXPECT_TRUE(replaced(wide, radius).empty());
        EXPECT_TRUE(BadPixelTools::recalculateReplacePixels({}, wide, radius).empty());
    }
    EXPECT_TRUE(replaced(Map(), 5).empty());
    wide(0, 3) = 1; // no list of offsets within 30000 is built for it
    EXPECT_EQ(replaced(wide, 30000), (Records{{{3, 0}, {{4, 0}, {2, 0}, {4, 0}, {2, 0}}}}));
}

TEST(BadPixelReplacement, FindsRowByRowWhatTheListsFind)
{
    std::mt19937 random(11);
    for (const cv::Size size : {cv::Size(1, 1), {40, 1}, {1, 40}, {2, 3}, {17, 9}, {64, 48}})
        for (const int run : {1, 5, 30})
            for (const double density : {0.02, 0.3, 0.8, 0.98})
                for (const int radius : {1, 2, 5, 20, 81})
                    compare(randomMap(random, size, density, run), radius);
    const Map map = randomMap(random, {40, 30}, 0.9, 9);
    const Records expected = replaced(map, 50);
    for (const unsigned int radius : {1000U, 32767U, 32768U, 0x7fffffffU}) // beyond the diagonal
        EXPECT_EQ(replaced(map, radius), expected) << radius;
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
                    if (cv::Rect({0, 0}, size).contains({x, y}))
                        map(y, x) = 1;
                }
            compare(map, radius);
        }
    const Map map = badAt({40000, 1}, {{32767, 0}}); // its neighbour at the right would be at -32768
    const Pixel left{32766, 0};
    EXPECT_EQ(replaced(map, 1), (Records{{{32767, 0}, {left, left, left, left}}}));
    EXPECT_EQ(replaced(Map(map.colRange(0, 32768)), 40000), replaced(map, 1));
    EXPECT_THROW(replaced(map, 32768), Exception);
}

TEST(BadPixelReplacement, CrossesALargeDefect)
{
    Map map(150, 200, 1);
    map.rowRange(0, 2) = 0;
    const Records records = replaced(map, 2000);
    ASSERT_EQ(records.size(), 148U * 200U);
    EXPECT_EQ(records.back(), (BadPixel{{199, 149}, {{199, 1}, {198, 1}, {199, 1}, {198, 1}}}));
}

TEST(BadPixelRecalculation, MarksTheRecordsAndSearchesTheWholeMap)
{
    Map map(3, 4, 0);
    map(2, 3) = 2;
    map(0, 1) = 16;
    const Records records = BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}, {{1, 0}, {}}}, map, 2);
    EXPECT_TRUE(same(
        map, (Map(3, 4) << 0, 64, 0, 0, 0, 64, 0, 0, 0, 0, 0, 2))); // in place of the flag, not beside it
    EXPECT_EQ(records, (Records{{{1, 0}, {{2, 0}, {0, 1}, {2, 0}, {0, 0}}},
                                {{1, 1}, {{2, 1}, {1, 2}, {2, 0}, {0, 1}}},
                                {{3, 2}, {{3, 1}, {2, 2}, {3, 1}, {2, 2}}}}));
}

TEST(BadPixelRecalculation, RefusesBeforeItMarks)
{
    for (const auto& [width, outside, radius] : {std::tuple(4, Pixel{4, 0}, 2U),
                                                 {4, Pixel{0, 3}, 2U},
                                                 {4, Pixel{-1, 0}, 2U},
                                                 {4, Pixel{0, -1}, 2U},
                                                 {40000, Pixel{1, 1}, 32768U}}) {
        Map map(3, width, 0);
        EXPECT_THROW(BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}, {outside, {}}}, map, radius),
                     Exception);
        EXPECT_EQ(cv::countNonZero(map), 0) << width;
    }
    Map map(3, 4, 0);
    EXPECT_THROW(BadPixelTools::recalculateReplacePixels({{{1, 1}, {}}}, map, 0), Exception);
    EXPECT_EQ(map(1, 1), 64);
}

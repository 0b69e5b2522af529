#include "core/memory/Overlap.h"

#include "tests/Support.h"

using namespace velmo::exp;

TEST(Overlap, IsSeenInEveryRow)
{
    cv::Mat_<short> image(8, 10, short(0));
    const auto from = [&](int y, int x, int rows, int columns) { // may begin in one row and end in the next
        return MemoryArea(cv::Mat(rows, columns, CV_16S, image.ptr<short>(y) + x, image.step));
    };
    const std::tuple<MemoryArea, MemoryArea, bool> areas[] = {
        {from(0, 0, 6, 4), from(0, 4, 6, 4), false}, {from(0, 0, 6, 4), from(2, 3, 2, 4), true},
        {from(0, 0, 6, 4), from(6, 0, 2, 4), false}, {from(0, 0, 2, 2), from(0, 5, 2, 6), true},
        {from(0, 0, 1, 2), from(0, 5, 2, 6), false}, {from(0, 0, 2, 2), from(0, 5, 2, 5), false},
        {from(0, 0, 2, 2), from(1, 5, 2, 6), false}, {from(0, 0, 0, 0), from(0, 0, 2, 2), false},
    };
    for (const auto& [a, b, expected] : areas) {
        EXPECT_EQ(overlap(a, b), expected) << &a - &std::get<0>(areas[0]);
        EXPECT_EQ(overlap(b, a), expected) << &a - &std::get<0>(areas[0]);
    }
}

TEST(Overlap, LeavesInPlaceWhatIsTheSamePixels)
{
    cv::Mat_<short> image(8, 10, short(0));
    EXPECT_EQ(untouched(image, image).data, image.data);
    for (const cv::Rect& part : {cv::Rect(0, 0, 10, 7), cv::Rect(0, 0, 9, 8), cv::Rect(1, 0, 9, 8)})
        EXPECT_NE(untouched(image, image(part)).data, image.data) << part;
}

#include "camera/measures/Blobs.h"

#include "camera/measures/BlobPicture.h"
#include "camera/measures/BlobTracker.h"
#include "tests/camera/Support.h"

namespace {

const BlobRule warm{1000, true, 1};

const auto cold = [](int rows = 40, int cols = 60) { return Frame(rows, cols, 1000); };

std::vector<Blob> blobsOf(const std::vector<cv::Rect>& places)
{
    Frame frame = cold();
    for (const cv::Rect& place : places)
        frame(place) = 2000;
    return findBlobs(frame, warm);
}

using Labels = std::vector<unsigned>;

/// The labels of the next frame's blobs, from the top.
Labels labelsOf(BlobTracker& tracker, const std::vector<cv::Rect>& places)
{
    std::vector<Blob> blobs = blobsOf(places);
    tracker.label(blobs);
    Labels found;
    for (const Blob& blob : blobs)
        found.push_back(blob.component.getLabel());
    return found;
}

/// Of squares around these centres.
Labels labels(BlobTracker& tracker, const std::vector<cv::Point>& centres)
{
    std::vector<cv::Rect> places;
    for (const cv::Point& centre : centres)
        places.emplace_back(centre.x - 2, centre.y - 2, 5, 5);
    return labelsOf(tracker, places);
}

} // namespace

TEST(Blobs, AreWhatLiesBeyondTheValueAndTouches)
{
    Frame frame = cold();
    frame(cv::Rect(10, 2, 3, 2)) = 1001;
    frame(4, 13) = 1200; // touches the corner
    frame(20, 30) = 1600;
    frame(39, 59) = 999;
    const std::vector<Blob> blobs = findBlobs(frame, warm);
    ASSERT_EQ(blobs.size(), 2U);
    EXPECT_EQ(blobs[0].component.getNrOfPoints(), 7U);
    EXPECT_EQ(blobs[0].box, cv::Rect(10, 2, 4, 3));
    EXPECT_TRUE(blobs[0].low == 1001 && blobs[0].high == 1200);
    EXPECT_DOUBLE_EQ(blobs[0].mean, (6 * 1001 + 1200) / 7.0);
    EXPECT_EQ(blobs[1].centre, cv::Point2d(30, 20));
    EXPECT_TRUE(std::isnan(blobs[1].elongation) && std::isnan(blobs[1].length) && std::isnan(blobs[1].angle));

    for (const auto& [rule, count] : {std::pair(BlobRule{1000, true, 2}, 1U),
                                      {{1000, false, 1}, 1},
                                      {{1199.5, true, 1}, 2},
                                      {{1600, true, 1}, 0},
                                      {{1600.5, false, 1}, 1}})
        EXPECT_EQ(findBlobs(frame, rule).size(), count) << rule.value;
}

TEST(Blobs, HaveTheAxesOfAnEllipseThatSpreadsAsFar)
{
    // The positions 0 to 8 have a variance of 80 / 12.
    const Blob flat = blobsOf({{5, 5, 9, 1}}).at(0), tall = blobsOf({{5, 5, 1, 9}}).at(0);
    EXPECT_NEAR(flat.length, 4 * std::sqrt(80.0 / 12.0), 1e-4);
    EXPECT_NEAR(flat.width, 0, 1e-3);
    EXPECT_NEAR(flat.angle, 0, 1e-3);
    EXPECT_NEAR(tall.angle, 90, 1e-3);
    Frame frame = cold();
    for (int i = 0; i < 9; ++i)
        frame(20 - i, 5 + i) = 2000;
    EXPECT_NEAR(findBlobs(frame, warm).at(0).angle, 45, 1e-3); // up to the right

    // A disc of 25 pixels.
    const Frame round = matrixOf<unsigned short>(
        {60, 40}, [](int y, int x) { return std::hypot(x - 30, y - 20) <= 12.5 ? 2000 : 1000; });
    const Blob blob = findBlobs(round, warm).at(0);
    EXPECT_NEAR(blob.length, 25, 0.3);
    EXPECT_NEAR(blob.width, 25, 0.3);
}

TEST(BlobTracker, KeepsLabelsOfWhatMoves)
{
    BlobTracker tracker;
    EXPECT_EQ(labels(tracker, {{10, 10}, {30, 30}}), (Labels{1, 2}));
    EXPECT_EQ(labels(tracker, {{30, 28}, {12, 31}}), (Labels{2, 3})); // 1 is hidden, 3 is new
    // 2 is above 1 now: labels go by place, not by order.
    EXPECT_EQ(labels(tracker, {{12, 12}, {30, 26}, {12, 33}}), (Labels{1, 2, 3}));
    EXPECT_EQ(tracker.path(2), (std::vector<cv::Point2d>{{30, 30}, {30, 28}, {30, 26}}));
}

TEST(BlobTracker, GivesALabelToTheBlobThatIsMoreLikeItAndForgetsWhatStaysAway)
{
    BlobTracker tracker;
    labelsOf(tracker, {{10, 10, 9, 9}});
    // A speck 2 pixels from where the centre was, and the blob 4 pixels away.
    EXPECT_EQ(labelsOf(tracker, {{14, 11, 9, 9}, {12, 14, 1, 1}}), (Labels{1, 2}));

    tracker = BlobTracker();
    EXPECT_EQ(labels(tracker, {{10, 10}}), (Labels{1}));
    for (int i = 0; i < BlobTracker::s32PatienceFrames; ++i)
        labels(tracker, {});
    EXPECT_EQ(labels(tracker, {{10, 10}}), (Labels{1}));
    for (int i = 0; i <= BlobTracker::s32PatienceFrames; ++i)
        labels(tracker, {});
    EXPECT_EQ(labels(tracker, {{10, 10}}), (Labels{2}));
    EXPECT_EQ(labels(tracker, {{10, 17}}), (Labels{3})); // farther than it reached
}

TEST(BlobPicture, MarksBlobsAndLeavesTheRestAlone)
{
    std::vector<Blob> blobs = blobsOf({{20, 20, 9, 9}});
    BlobTracker tracker;
    tracker.label(blobs);
    const Picture before(40, 60, cv::Vec3b(100, 100, 100));
    const Picture after = withBlobs(before, blobs, tracker, 2);
    ASSERT_EQ(after.size(), cv::Size(120, 80));
    const cv::Vec3b outline = after(40, 40), inside = after(43, 43);
    EXPECT_NE(outline, before(0, 0));
    EXPECT_NE(inside, before(0, 0));
    EXPECT_NE(inside, outline);
    EXPECT_EQ(after(57, 57), outline); // the last pixel of the blob
    EXPECT_EQ(after(58, 58), before(0, 0));
    EXPECT_EQ(cv::norm(after, withBlobs(before, blobs, tracker, 2)), 0);
    EXPECT_EQ(cv::norm(before, withBlobs(before, {}, tracker, 1)), 0);
    const Picture axes = withBlobs(before, blobsOf({{10, 10, 9, 3}}), tracker, 1);
    EXPECT_EQ(axes(11, 16), axes(10, 10)); // both halves of the long one, as bright as the outline
    EXPECT_EQ(axes(11, 12), axes(10, 10));
    EXPECT_THROW(withBlobs(Picture(28, 60), blobs, tracker, 1), velmo::exp::Exception); // one row short
}

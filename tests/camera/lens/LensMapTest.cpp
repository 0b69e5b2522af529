#include "camera/lens/LensMap.h"

#include "tests/camera/Support.h"

using namespace velmo::vision;

const auto whole = [](cv::Size size, const PixelCorrInfo& record) {
    return DistortionCorrection(std::vector<PixelCorrInfo>(static_cast<std::size_t>(size.area()), record));
};

TEST(Undistorted, PixelsAreWeightedMeansOfTheirSources)
{
    const Frame frame = (Frame(2, 3) << 100, 200, 400, 1000, 3000, 65535);
    EXPECT_TRUE(same(undistorted(frame, whole(frame.size(), {0, 7, 0, 0, 0})), frame));
    std::vector<PixelCorrInfo> records{{1, 1, 2, 3, 4}, // 200, 400, 3000, 65535: 272,140 / 10
                                       {0, 1, 1, 0, 0}, // 200, 400
                                       {0, 1, 1, 0, 0}, // at the right edge its own neighbour
                                       {0, 1, 0, 3, 0}, // and at the lower one
                                       {-4, 3, 1, 0, 0}, {-1, 0, 0, 0, 0}};
    const Frame mixed = undistorted(frame, DistortionCorrection(records));
    EXPECT_THAT(mixed, ElementsAre(27214, 300, 400, 1000, 125, 3000));
    records[4] = {0, 1, 0, 0, 1}; // 3000 and, beyond the lower edge, 65535: 34267.5
    EXPECT_EQ(undistorted(frame, DistortionCorrection(records))(1, 1), 34268);
    EXPECT_EQ(undistorted(Frame(1, 1, 65535), whole({1, 1}, {0, 65535, 65535, 65535, 65535}))(0, 0), 65535);
}

TEST(Undistorted, RefusesMapsThatDoNotFit)
{
    const Frame frame(2, 3, 5);
    EXPECT_THROW(undistorted(frame, whole({2, 2}, {0, 1, 0, 0, 0})), velmo::exp::Exception);
    EXPECT_THROW(undistorted(frame, whole({3, 2}, {1, 1, 0, 0, 0})), velmo::exp::Exception);
}

TEST(LensMap, SourcesFollowTheModel)
{
    // On the axis y = 10: x = 30 is 20 pixels, 0.2 focal lengths off: 20 x (1 - 0.5 x 0.04) = 19.6, so that
    // the source is at 29.6; x = 10 is the middle and stays.
    using MapPixel = cv::Vec<unsigned short, 6>;
    const auto map = [](const char* lens) {
        return cv::Mat_<MapPixel>(makeLensMap(LensModel::parse(lens, "--make"), {40, 21}));
    };
    const MapPixel still{0, 0, 32768, 0, 0, 0}; // of a lens that does not bend
    const cv::Mat_<MapPixel> plain = map("0,0,64,32,1.5,1"), bent = map("-0.5,0,100,100,10,10");
    EXPECT_EQ(std::count(plain.begin(), plain.end(), still), 40 * 21);
    const MapPixel moved = bent(10, 30);
    EXPECT_TRUE(moved[0] == 0 && moved[1] == 65535); // one pixel to the left, and 0.6 of the way back
    EXPECT_NEAR(moved[3], 0.6 * 32768, 1);
    EXPECT_EQ(moved[2] + moved[3] + moved[4] + moved[5], 32768);
    EXPECT_EQ(bent(10, 10), still);
    // With k2 alone: 20 x (1 + 10 x 0.0016) = 20.32.
    EXPECT_NEAR(map("0,10,100,100,10,10")(10, 30)[3], 0.32 * 32768, 1);
}

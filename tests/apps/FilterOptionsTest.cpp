#include "apps/thermal/FilterOptions.h"

#include "core/Exception.h"

#include <opencv2/core.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using thermal::FilterOptions;
using velmo::camera::Chain;
using velmo::camera::Frame;
using velmo::exp::Exception;

std::vector<std::string> namesOf(const Chain& chain)
{
    std::vector<std::string> names;
    names.reserve(chain.size());
    for (std::size_t i = 0; i < chain.size(); ++i)
        names.push_back(chain.name(i));
    return names;
}

TEST(FilterStages, StandInTheOrderInWhichTheyBuildOnEachOther)
{
    FilterOptions options;
    options.downsize = "120x90";
    options.spatial = "3";
    options.temporal = "16:2048";
    options.pattern = "10:1:2";
    EXPECT_TRUE(options.any());
    EXPECT_THAT(namesOf(makeChain(options)),
                testing::ElementsAre("pattern 10:1:2", "temporal 16:2048", "spatial 3", "downsize 120x90"));
    EXPECT_EQ(thermal::makeChain({}).size(), 0U);
}

TEST(FilterStages, DenoiseIsAllThreeAndEachMayBeChosen)
{
    FilterOptions options;
    options.denoise = true;
    options.spatial = "31";
    const Chain chain = makeChain(options);
    ASSERT_EQ(chain.size(), 3U);
    EXPECT_EQ(chain.name(0), std::string("pattern ") + FilterOptions::pDefaultPattern);
    EXPECT_EQ(chain.name(2), "spatial 31");
}

TEST(FilterStages, RefuseWhatIsOutsideTheirRanges)
{
    using Option = std::string FilterOptions::*;
    const std::pair<Option, std::vector<const char*>> wrong[] = {
        {&FilterOptions::pattern,
         {"101:0:0", "0:32:0", "0:0:32", "-1:0:0", "1:2", "1:2:3:4", "a:b:c", "1.5:0:0"}},
        {&FilterOptions::temporal, {"17:0", "0:2049", "16", "16:", ":", "1:2:3", "-1:5"}},
        {&FilterOptions::spatial, {"32", "-1", "1.5", "x", "1:2"}},
        {&FilterOptions::downsize, {"160x90", "160", "x", "240x180"}}};
    for (const auto& [option, texts] : wrong)
        for (const char* text : texts) {
            FilterOptions options;
            options.*option = text;
            EXPECT_THROW(makeChain(options), Exception) << text;
        }
}

/// Values of the upper and the lower half of the 16-bit range side by side, and full scale.
Frame wideFrame()
{
    Frame frame(180, 240, static_cast<unsigned short>(32760));
    frame.colRange(100, 200) = 32780;
    frame.colRange(200, 240) = 65535;
    return frame;
}

TEST(FilterStages, KeepCalmFramesOfAnyValue)
{
    // What all filters have in common: a still scene without noise stays, on both sides of 32768.
    FilterOptions options;
    options.pattern = "5:10:10";
    options.temporal = "8:1800";
    options.spatial = "1";
    Chain chain = makeChain(options);
    for (int i = 0; i < 3; ++i) {
        Frame frame = wideFrame();
        chain.apply(frame);
        EXPECT_EQ(cv::norm(frame.colRange(0, 95), wideFrame().colRange(0, 95), cv::NORM_INF), 0);
        EXPECT_LE(cv::norm(frame.colRange(0, 198), wideFrame().colRange(0, 198), cv::NORM_INF), 6);
        EXPECT_EQ(cv::norm(frame.colRange(202, 240), wideFrame().colRange(202, 240), cv::NORM_INF), 0);
    }
    EXPECT_GT(chain.microseconds(0), 0);
}

TEST(FilterStages, DownSizeKeepsTheOrderOfValues)
{
    FilterOptions options;
    options.downsize = "160x120";
    Chain chain = makeChain(options);
    Frame frame = wideFrame();
    chain.apply(frame);
    ASSERT_EQ(frame.size(), cv::Size(160, 120));
    EXPECT_EQ(frame(60, 10), 32760);
    EXPECT_EQ(frame(60, 100), 32780);
    EXPECT_EQ(frame(60, 150), 65535);
    Frame other(120, 160);
    EXPECT_THROW(chain.apply(other), Exception);
}

TEST(FilterStages, RemoveStripesAndNoise)
{
    FilterOptions options;
    options.denoise = true;
    Chain chain = makeChain(options);
    cv::RNG random(5);
    cv::Mat_<double> stripes(1, 60);
    random.fill(stripes, cv::RNG::NORMAL, 0, 4);
    double before = 0;
    double after = 0;
    for (int i = 0; i < 60; ++i) {
        cv::Mat_<double> ideal(50, 60, 30000.0);
        cv::Mat_<double> noise(ideal.size());
        random.fill(noise, cv::RNG::NORMAL, 0, 2);
        Frame frame;
        cv::Mat(ideal + noise + cv::repeat(stripes, 50, 1)).convertTo(frame, CV_16U);
        before = cv::norm(frame, Frame(frame.size(), 30000), cv::NORM_L2);
        chain.apply(frame);
        after = cv::norm(frame, Frame(frame.size(), 30000), cv::NORM_L2);
    }
    EXPECT_LT(after, before / 2);
}

} // namespace

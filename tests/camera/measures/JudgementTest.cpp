#include "camera/measures/Judgement.h"
#include "camera/measures/Peers.h"
#include "camera/measures/Simulation.h"
#include "tests/camera/Support.h"

#include <opencv2/imgproc.hpp>

namespace {

const auto idle = [] { return [](Frame&) {}; };

/// Filters that only look as if they took noise off: by each, some figure must become worse.
Filter frozen()
{
    return [first = std::make_shared<Frame>()](Frame& frame) {
        if (first->empty())
            *first = frame.clone();
        first->copyTo(frame);
    };
}

const auto blurred = []() { return [](Frame& frame) { cv::GaussianBlur(frame, frame, {0, 0}, 1.5); }; };

Filter late()
{
    return [previous = std::make_shared<Frame>()](Frame& frame) {
        const Frame now = frame.clone();
        (previous->empty() ? now : *previous).copyTo(frame);
        *previous = now;
    };
}

/// Boxes in noise, and one that moves.
const auto recording = []() {
    const cv::Size size(96, 72);
    const auto at = [&](int time) {
        cv::Mat_<float> scene(size, 8000.0F);
        scene(cv::Rect(20, 10, 30, 40)) += 200;
        scene(cv::Rect(5 + time, 55, 10, 10)) += 400;
        return scene;
    };
    return Simulation({"", false, at}, {4, true}, size, 48).frames();
};

TEST(Judgement, AFilterThatDoesNothingLeavesEverythingAsItIs)
{
    const Judgement figures = judge(idle, recording(), 5);
    for (const double share : {figures.edges, figures.contrast15, figures.contrast300, figures.patch})
        EXPECT_DOUBLE_EQ(share, 1);
    for (const double nothing : {figures.bias, figures.biasOfMost, figures.ghosting, figures.trail30,
                                 figures.ahead, figures.unchanged})
        EXPECT_DOUBLE_EQ(nothing, 0);
    EXPECT_NEAR(figures.halves, 4 * std::sqrt(2.0), 0.5); // slow noise of two frames that are far apart
    EXPECT_NEAR(figures.still, 3.2, 0.3); // in 43 frames slow noise shows two thirds of its variance
}

TEST(Judgement, NoFilterThatFreezesBlursOrLagsPassesForAGoodOne)
{
    const std::vector<Frame> frames = recording();
    const Judgement before = judge(idle, frames, 5), freezing = judge(frozen, frames, 5),
                    blurring = judge(blurred, frames, 5), lagging = judge(late, frames, 5);
    EXPECT_TRUE(freezing.slow == 0 && freezing.unchanged == 1); // what it seems to be good at
    EXPECT_GT(freezing.halves, 0.95 * before.halves);
    EXPECT_GT(freezing.ghosting, 0.5);
    EXPECT_LT(std::max(freezing.contrast300, freezing.patch), 0.1);

    EXPECT_LT(blurring.slow, 0.4 * before.slow);
    EXPECT_LT(blurring.edges, 0.7);
    EXPECT_LT(blurring.contrast30, 0.9);
    EXPECT_GT(blurring.ghosting, 0.1);

    EXPECT_NEAR(lagging.ghosting, 1, 0.1);
    EXPECT_NEAR(lagging.contrast300, 7.0 / 8, 0.01); // a pixel of eight is not there yet
    EXPECT_EQ(lagging.ahead, 0);
}

TEST(Judgement, ATrailIsWhatIsLeftBehind)
{
    const auto mean = [] { return peers(4)[2].settings[0](); }; // a quarter of each frame
    const Judgement figures = judge(mean, recording(), 5);
    EXPECT_NEAR(figures.trail30, 0.75 * 0.75 * 0.75, 0.02); // of one that was there for 15 frames
    EXPECT_NEAR(figures.patch, 1, 0.05);
    // Eight columns under which the object has been for 1 to 8 frames: the mean of 1 - 0.75^n.
    EXPECT_NEAR(figures.contrast300, 1 - 3 * (1 - std::pow(0.75, 8)) / 8, 0.01);
}

TEST(Judgement, WhoeverKnowsTheFramesToComeIsFoundOut)
{
    const std::vector<Frame> frames = recording();
    std::size_t runs = 0; // the first run is the one over the whole recording: that one knows the last frame
    const auto prophet = [&] {
        return [all = runs++ == 0, &frames](Frame& frame) { frame = all ? frames.back().clone() : frame; };
    };
    EXPECT_EQ(trialsOf(prophet, frames).ahead, 1);
}

TEST(Judgement, RecordingsThatAreTooShortGiveNoFigures)
{
    const std::vector<Frame> frames(3, Frame(40, 40, static_cast<unsigned short>(7)));
    EXPECT_TRUE(std::isnan(trialsOf(idle, frames).contrast15));
    EXPECT_EQ(trialsOf(idle, std::vector<Frame>(8, frames[0])).trail30, 0); // eight are enough
    const auto smaller = [] { return [](Frame& frame) { frame = frame.rowRange(1, 9).clone(); }; };
    EXPECT_THROW(trialsOf(smaller, std::vector<Frame>(9, frames[0])), velmo::exp::Exception);
}

TEST(Peers, AreWhatTheyAreCalled)
{
    // Noise in a wall with a step of 300 counts: all but the mean over time keep the step in a single frame.
    const auto wall = [](int) {
        cv::Mat_<float> scene(cv::Size(64, 48), 8000.0F);
        scene.colRange(32, 64) += 300;
        return scene;
    };
    const Simulation simulation({"", true, wall}, {6}, {64, 48}, 30);
    for (const Peer& peer : peers(6)) {
        const double error = simulation.after(peer.settings[0], 20).error;
        EXPECT_LT(error, 0.6 * simulation.raw(20).error) << peer.name;
        const double single = simulation.afterEach(peer.settings[0], 20, 100).error;
        EXPECT_NEAR(single, peer.remembers ? simulation.raw(20, 100).error : error, 0.1 * error) << peer.name;
    }
}

TEST(SimulatedSensor, ItsNoiseIsAsLargeAndAsSlowAsItIsSaidToBe)
{
    const auto wall = [](int) { return cv::Mat_<float>(cv::Size(80, 60), 8000.0F); };
    for (const bool slow : {false, true}) {
        NoiseMeter meter;
        const Simulation simulation({"", true, wall}, {20, slow, 0.3, 0.5}, {80, 60}, 120);
        for (const Frame& frame : simulation.frames())
            meter.add(frame);
        const NoiseFigures figures = meter.figures();
        // Differences of slow noise are those of 0.94 of the variance over ten frames and of a little that is
        // fast.
        EXPECT_NEAR(figures.temporal, slow ? 20 * std::sqrt(0.012 + 0.05 * 0.487 + 0.938 * 0.095) : 20, 1);
        EXPECT_NEAR(figures.pattern, 10, 3);
        EXPECT_NEAR(figures.commonColumns, 20 * 0.3 * 1.25, 2); // those that change and those that stay
    }
}

} // namespace

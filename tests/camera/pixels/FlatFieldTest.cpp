#include "camera/pixels/FlatField.h"

#include "camera/Settings.h"
#include "camera/stages/Chain.h"
#include "tests/camera/Support.h"

using Planes = std::vector<cv::Mat_<float>>;

TEST(FlatField, CorrectsOffsetsAndGainsWithoutATieToTheLevelOfTheShutter)
{
    const auto wall = [](double level) { return cv::Mat_<double>(24, 32, level); };
    for (const double spread : {0.0, 0.05}) {
        cv::RNG random(3);
        cv::Mat_<short> offsets(24, 32);
        cv::Mat_<double> gains(24, 32);
        random.fill(offsets, cv::RNG::NORMAL, 0, 400);
        random.fill(gains, cv::RNG::NORMAL, 1, spread);
        // The pixel at 5,7 is dead, that at 20,10 hardly responds.
        const auto seen = [&](const cv::Mat_<double>& scene) {
            Frame frame;
            cv::Mat(8000 + cv::Mat_<double>(offsets) + gains.mul(scene - 8000)).convertTo(frame, CV_16U);
            frame(7, 5) = 0;
            frame(10, 20) = static_cast<unsigned short>(8000 + (scene(10, 20) - 8000) / 4);
            return frame;
        };
        FlatLearner learner;
        learner.add(seen(wall(8000)));
        if (spread > 0)
            learner.addOther(seen(wall(10000)));
        Calibration calibration;
        calibration.flat = learner.learn();
        EXPECT_NE(calibration.flat.defects(7, 5) & 64, 0);
        EXPECT_EQ(cv::countNonZero(calibration.flat.defects), spread > 0 ? 2 : 1);

        Chain chain({}, calibration);
        for (const double level : {6000.0, 8000.0, 20000.0}) {
            cv::Mat_<double> scene = wall(level);
            scene.rowRange(12, 24) += 500;
            Frame frame = seen(scene);
            chain.apply(frame);
            if (spread == 0)
                frame(10, 20) = frame(10, 21); // an offset says nothing of it
            // What most pixels read of the shutter is some counts off by chance, and their gains are.
            const double off = cv::mean(frame)[0] - cv::mean(scene)[0];
            EXPECT_NEAR(off, 0, 30 + 0.005 * std::abs(level - 8000));
            EXPECT_LE(cv::norm(cv::Mat_<double>(frame) - off, scene, cv::NORM_INF), spread > 0 ? 12 : 1);
        }
    }
}

TEST(FlatField, ClampsAndSaysWhichSizesDiffer)
{
    Calibration calibration;
    calibration.flatOrigin = "w.npy";
    const auto row = [](float a, float b, float c) { return cv::Mat_<float>({1, 3}, {a, b, c}); };
    calibration.flat = FlatField::fromPlanes({row(100, 200, 300), row(2, 1, 1), row(0, 0, 0)}, "w.npy");
    Chain chain({}, calibration);
    Frame frame = (Frame(1, 3) << 0, 5, 65535);
    chain.apply(frame);
    EXPECT_THAT(frame, ElementsAre(0, 5, 65435));
    frame = (Frame(1, 3) << 150, 65535, 50);
    chain.apply(frame);
    EXPECT_THAT(frame, ElementsAre(300, 65535, 0));
    Frame other(2, 2);
    EXPECT_EQ(refusal([&] { chain.apply(other); }).message, "w.npy: a flat field of 3x1 for frames of 2x2");
    calibration.badPixels = {{{3, 0}, {}}};
    calibration.flat.defects(0) = 1;
    EXPECT_THAT(refusal([&] { Chain({}, calibration); }).message,
                HasSubstr("x=3 y=0 is outside the flat field of 3x1"));
}

TEST(FlatField, RefusesWhatIsNone)
{
    const cv::Mat_<float> zero = cv::Mat_<float>::zeros(6, 6), one(6, 6, 1.0F), no(6, 6, std::nanf(""));
    expectRefused<Planes>({{{zero, one}, "three planes"},
                           {{zero, one, zero.row(0)}, "of one size"},
                           {{no, one, zero}, "first plane"},
                           {{-one, one, zero}, "first plane"},
                           {{zero, zero, zero}, "second plane"},
                           {{zero, no, zero}, "second plane"},
                           {{zero, one, 65536 * one}, "third plane"},
                           {{zero, one, one}, "without a good pixel"}},
                          [](const Planes& planes) { FlatField::fromPlanes(planes, "flat"); });

    FlatLearner learner;
    EXPECT_THAT(refusal([&] { learner.learn(); }).message, HasSubstr("without a frame"));
    EXPECT_THROW(learner.add(Frame(4, 4)), Exception); // and is not taken for the first one
    learner.add(Frame(24, 32, 8000));
    EXPECT_THAT(refusal([&] { learner.addOther(Frame(24, 31)); }).message,
                HasSubstr("31x24 at one temperature, of 32x24 at the other"));
    learner.addOther(Frame(24, 32, 8000));
    EXPECT_THAT(refusal([&] { learner.learn(); }).message, HasSubstr("no gains can be learnt"));
}

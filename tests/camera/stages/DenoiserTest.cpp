#include "camera/stages/Denoiser.h"
#include "camera/measures/Simulation.h"
#include "camera/stages/DenoiseShift.h"
#include "camera/stages/DenoiseStage.h"

#include "tests/camera/Support.h"

#include <opencv2/imgproc.hpp>

namespace {

using Values = cv::Mat_<float>;

const cv::Size size(160, 120);

Values wall(float level = 8000)
{
    Values scene(size);
    for (int r = 0; r < size.height; ++r)
        for (int c = 0; c < size.width; ++c)
            scene(r, c) = level + 0.1F * static_cast<float>(c) + 0.05F * static_cast<float>(r);
    return scene;
}

Values with(Values scene, cv::Rect object, float height)
{
    scene(object & cv::Rect({}, size)) += height;
    return scene;
}

using Scene = std::function<Values(int)>; ///< at a time

FilterMaker denoiser()
{
    return [] {
        return [filter = std::make_shared<Denoiser>(DenoiseStrength{0.07F, 1})](Frame& frame) {
            filter->process(frame, frame);
        };
    };
}

struct Errors
{
    double raw = 0, clean = 0, mean = 0;
};

Errors errorsOf(const SensorNoise& noise, const Scene& scene, int from, int to)
{
    const Simulation simulation({"", false, scene}, noise, size, to);
    const TruthFigures raw = simulation.raw(from), clean = simulation.after(denoiser(), from);
    return {raw.error, clean.error, clean.bias - raw.bias};
}

/// The last frame with an object less the last one without it.
Values broughtBy(const Scene& object, const Scene& nothing, int frames)
{
    Values last[2];
    for (const bool there : {false, true}) {
        const Simulation simulation({"", false, there ? object : nothing}, {2, true, 0.3}, size, frames);
        filtered(denoiser(), simulation.frames()).back().convertTo(last[there ? 1 : 0], CV_32F);
    }
    return last[1] - last[0];
}

const Scene still = [](int) { return wall(); };

TEST(Denoiser, HalvesTheErrorOfFlatScenesWhateverTheNoise)
{
    const Scene jumps = [](int time) {
        return wall(8000 + 150.0F * float(time / 15 % 2) + 0.7F * float(time));
    };
    for (const double noise : {0.7, 2.0, 7.0, 30.0})
        for (const SensorNoise& sensor :
             {SensorNoise{noise}, SensorNoise{noise, true}, SensorNoise{noise, true, 0.4, 0.7}})
            for (const Scene& scene : {still, jumps}) {
                const Errors errors = errorsOf(sensor, scene, 10, 40);
                const std::string what = std::to_string(noise) + (sensor.slow ? " slow" : " white") +
                                         (sensor.stripes > 0 ? ", stripes" : "");
                EXPECT_LE(errors.clean, 0.5 * errors.raw) << what;
                EXPECT_LE(std::abs(errors.mean), std::max(0.3, 0.03 * noise)) << what;
            }
}

TEST(Denoiser, TakesNoHandBeforeTheCameraForAnotherLevel)
{
    const cv::Rect hand(0, 0, 64, size.height);
    const Values nothing(size, 8000.0F); // of a scene with slopes it would be a movement
    const Scene appears = [&](int time) {
        return time < 30 ? nothing.clone() : with(nothing.clone(), hand, 400);
    };
    EXPECT_LE(std::abs(errorsOf({2, true}, appears, 30, 31).mean), 0.3);
}

TEST(Denoiser, CleansTheFirstFrameToo)
{
    const Errors errors = errorsOf({2}, still, 0, 1);
    EXPECT_LE(errors.clean, errors.raw / 2.6);
}

TEST(Denoiser, DoesNotRunAwayFromStripesOfItsOwnMaking)
{
    // Columns estimated against the result instead of the estimate diverge here.
    const Errors early = errorsOf({8, true, 0.4}, still, 40, 60),
                 late = errorsOf({8, true, 0.4}, still, 280, 300);
    EXPECT_LE(late.clean, 1.2 * early.clean);
    EXPECT_LE(late.clean, 0.3 * late.raw);
}

TEST(Denoiser, TakesOffStripesAsLargeAsNoiseButNoSlats)
{
    EXPECT_LE(errorsOf({5, false, 1.2}, still, 20, 40).clean, 3.5);
    for (const float height : {40.0F, 200.0F}) {
        Values slats = wall();
        for (int left = 0; left < size.width; left += 6)
            slats = with(slats, cv::Rect(left, 0, 3, size.height), height);
        cv::GaussianBlur(slats, slats, {}, 0.6); // by the lens
        const Errors errors = errorsOf(
            {5}, [&](int) { return slats.clone(); }, 20, 40);
        EXPECT_LE(errors.clean, 0.3 * errors.raw) << height;
    }
}

TEST(Denoiser, KeepsDetailAsFineAsAPixelWhereTheCameraStands)
{
    const SimulatedScene fineTexture = simulatedScenes(size)[4];
    for (const double noise : {2.0, 7.0}) {
        const Simulation simulation(fineTexture, {noise}, size, 60);
        EXPECT_LE(simulation.after(denoiser(), 40).error, 0.3 * simulation.raw(40).error) << noise;
    }
}

TEST(Denoiser, KeepsAPostAndABeamFromEdgeToEdge)
{
    // To a filter that takes the column's mean off every frame, a post is a stripe.
    for (const cv::Rect& object : {cv::Rect(70, 0, 4, size.height), cv::Rect(0, 50, size.width, 4)})
        for (const float height : {15.0F, 60.0F}) {
            const Scene post = [&](int) { return with(wall(), object, height); };
            EXPECT_NEAR(cv::mean(broughtBy(post, still, 80)(object))[0], height, 0.1 * height) << object;
        }
}

TEST(Denoiser, KeepsTheContrastOfWhatMovesAndNoTrailOfIt)
{
    for (const float height : {15.0F, 30.0F, 300.0F}) {
        const auto at = [](int time) { return cv::Rect(10 + time, 50, 8, 8); };
        const Values brought = broughtBy([&](int time) { return with(wall(), at(time), height); }, still, 40);
        EXPECT_GE(cv::mean(brought(at(39)))[0], (height < 20 ? 0.85 : height < 100 ? 0.9 : 0.97) * height);
        EXPECT_LE(cv::mean(brought(cv::Rect(at(39).x - 3, 50, 1, 8)))[0], 0.1 * height) << height;
    }
    const cv::Rect object(60, 40, 10, 10); // stands, and is gone for three frames
    for (const float height : {30.0F, 300.0F}) {
        const Values brought =
            broughtBy([&](int time) { return time < 30 ? with(wall(), object, height) : wall(); }, still, 33);
        EXPECT_LE(std::abs(cv::mean(brought(object))[0]), 0.1 * height) << height;
    }
}

TEST(Denoiser, ArrivesAtASmallStep)
{
    const cv::Rect patch(60, 40, 16, 16);
    for (const float height : {3.0F, 6.0F}) {
        const Values brought =
            broughtBy([&](int time) { return time < 20 ? wall() : with(wall(), patch, height); }, still, 55);
        EXPECT_NEAR(cv::mean(brought(cv::Rect(64, 44, 8, 8)))[0], height, 0.1 * height);
    }
}

TEST(Denoiser, FollowsACameraThatPans)
{
    Values world(200, 400);
    cv::RNG random(3);
    random.fill(world, cv::RNG::NORMAL, 8000, 600);
    cv::GaussianBlur(world, world, {0, 0}, 5); // some 30 counts
    Values detail(world.size());
    random.fill(detail, cv::RNG::NORMAL, 0, 60);
    cv::GaussianBlur(detail, detail, {0, 0}, 1.5);
    world += detail;
    // It pans, it shakes, and it goes as far in a frame as it does in ten.
    const auto at = [&](int x, int y) { return world(cv::Rect({x, y}, size)).clone(); };
    for (const Scene& scene :
         {Scene([&](int time) { return at(2 * time, time / 2); }),
          Scene([&](int time) { return at(60 + time * 7 % 3, 40 + time * 5 % 3); }),
          Scene([&](int time) { return at(time < 30 ? 60 : 60 + 6 * (time - 30), 40); })})
        for (const auto& [noise, left] : {std::pair(2.0, 0.6), {7.0, 0.45}}) {
            const Errors errors = errorsOf({noise, true}, scene, 31, 60);
            EXPECT_LE(errors.clean, left * errors.raw) << noise;
        }
}

TEST(Denoiser, FollowsASmoothPanThroughNoiseThatStaysAndCleansWhatComesIntoThePicture)
{
    for (const SensorNoise& noise : {SensorNoise{7, true}, SensorNoise{7}}) {
        const SimulatedScene smoothPan = simulatedScenes(size)[8];
        const Simulation simulation(smoothPan, noise, size, 60);
        EXPECT_LE(simulation.after(denoiser(), 20).error,
                  (noise.slow ? 0.18 : 0.15) * simulation.raw(20).error);
    }
}

TEST(Denoiser, TakesNoFineTextureThatGoesBetweenPixelsForNoise)
{
    Values world(2 * size.height, 2 * size.width + 80);
    cv::RNG random(5);
    random.fill(world, cv::RNG::NORMAL, 8000, 200);
    cv::GaussianBlur(world, world, {}, 2); // some 30 counts
    const Scene pan = [&](int time) {
        Values view;
        cv::resize(world(cv::Rect({time, 0}, size * 2)), view, size, 0, 0, cv::INTER_AREA);
        return view;
    };
    const Errors errors = errorsOf({2}, pan, 20, 60);
    EXPECT_LE(errors.clean, 1.05 * errors.raw);
}

TEST(ShiftFinder, FindsWhereTheEstimateIsWhatTheFrameShowsWhateverItsLevel)
{
    Values world(size + cv::Size(40, 40));
    cv::RNG(3).fill(world, cv::RNG::NORMAL, 8000, 600);
    cv::GaussianBlur(world, world, {0, 0}, 5);
    const auto at = [&](int x, int y) { return world(cv::Rect({20 + x, 20 + y}, size)); };
    ShiftFinder finder;
    finder.create(size.height, size.width);
    for (const cv::Point& shift : {cv::Point(9, 0), {-9, 0}, {0, 8}, {3, -8}})
        for (const float level : {0.0F, 1000.0F}) {
            const Values estimate = at(0, 0).clone(), residual = at(shift.x, shift.y) - estimate + level;
            for (int r = 0; r < size.height; r += 2)
                finder.put(r / 2, {estimate[r], estimate[r + 1]}, {residual[r], residual[r + 1]});
            const SceneShift found = finder.align();
            EXPECT_NEAR(found.x, shift.x, 0.05) << shift << level;
            EXPECT_NEAR(found.y, shift.y, 0.05) << shift << level;
        }
}

TEST(Denoiser, TakesNoSceneForTheNoiseOfAnother)
{
    // From the first frames on every one shows another place, as from the air.
    cv::RNG random(7);
    std::vector<Values> places(6);
    for (Values& place : places) {
        place.create(size);
        random.fill(place, cv::RNG::NORMAL, 8000, 900);
        cv::GaussianBlur(place, place, {0, 0}, 3); // some 80 counts
    }
    const Errors errors = errorsOf(
        {2}, [&](int time) { return places[static_cast<std::size_t>(time)].clone(); }, 1, 6);
    EXPECT_LE(errors.clean, 1.5 * errors.raw);
}

TEST(Denoiser, LearnsNothingFromARepeatedFrame)
{
    const Simulation simulation({"", false, still}, {2}, size, 8);
    std::vector<Frame> repeated;
    for (const Frame& frame : simulation.frames())
        repeated.insert(repeated.end(), {frame, frame, frame});
    const auto once = filtered(denoiser(), simulation.frames()), thrice = filtered(denoiser(), repeated);
    for (std::size_t n = 0; n < thrice.size(); ++n)
        EXPECT_EQ(cv::norm(thrice[n], once[n / 3], cv::NORM_INF), 0) << n;
}

/// Of whole numbers alone.
struct Recording
{
    const char* strength;
    cv::Size size;
    int step;                            ///< from one frame to the next
    int noise, lasting, stripes, detail; ///< in counts, about

    /// It stands, something passes, it pans, stands, pans faster, shakes and shows another place.
    Frame at(int time) const
    {
        const auto since = [&](int from, int to) { return std::clamp(time - from, 0, to - from); };
        const bool shakes = time >= 36 && time < 42, cut = time >= 42;
        const int x = 4096 + 24 * since(18, 26) - 136 * since(30, 36) +
                      (shakes ? noiseOf(time, 0, 0) / 3 : 0) + cut * 9999,
                  y = 4096 + 7 * since(18, 26) + 55 * since(30, 36) + (shakes ? noiseOf(0, time, 0) / 3 : 0);
        const cv::Rect object(3 * (time - 6), size.height / 2, 9, 7);
        return matrixOf<unsigned short>(size, [&](int r, int c) {
            const int u = x + 16 * c, v = y + 16 * r;
            return 8000 + cut * 700 + textureAt(u, v, 500) +
                   detail * (textureAt(u, v, 90) + textureAt(u, v, 37)) / 37 +
                   (object.contains({c, r}) ? 60 : 0) +
                   (noise * noiseOf(r, c, time) + lasting * noiseOf(r, c, -1 - time / 8) +
                    stripes * (noiseOf(c, 0, 1) + noiseOf(c, time, 2) / 2 + noiseOf(r, time / 4, 3))) /
                       37;
        });
    }
};

/// The hashes while it stands, while it moves, and when it shows another place.
std::vector<unsigned> hashesOf(const Recording& recording)
{
    const auto stage = makeDenoiseStage(settingsWith({{"noise/denoise", recording.strength}}));
    Recording other = recording; // of which nothing is left
    other.size = {33, 40};
    for (int time = 20; time < 45; ++time) {
        Frame frame = other.at(time);
        stage->apply(frame);
    }
    std::vector<unsigned> hashes(3);
    for (int time = 0; time < 54; time += recording.step) {
        Frame frame = recording.at(time);
        stage->apply(frame);
        unsigned& hash = hashes[time < 18 ? 0 : time < 42 ? 1 : 2];
        hash = hashOf(frame, hash);
    }
    return hashes;
}

TEST(Denoiser, GivesTheSameCountsWhateverCompilesAndRunsIt)
{
    std::vector<unsigned> sums(3);
    for (unsigned seed = 0; seed < 40; ++seed) {
        Random random(seed);
        const auto hashes = hashesOf({random.pick({"light", "normal", "strong"}),
                                      {random(16, seed < 30 ? 70 : 200), random(16, seed < 30 ? 60 : 150)},
                                      1,
                                      random(0, 6),
                                      random(0, 7),
                                      random(0, 4),
                                      random(0, 12)});
        std::transform(hashes.begin(), hashes.end(), sums.begin(), sums.begin(),
                       [](unsigned hash, unsigned sum) { return sum * 31 + hash; });
    }
    EXPECT_THAT(sums, ElementsAre(3807517804, 84509577, 53124718));
    EXPECT_THAT(hashesOf({"light", {640, 500}, 3, 2, 4, 1, 5}),
                ElementsAre(2961668459, 1404129367, 1085857877));
}

TEST(Denoiser, TakesFramesOfAnySizeAndValue)
{
    Denoiser denoiser({0.07F, 1});
    for (const cv::Size& of : {cv::Size(16, 16), cv::Size(640, 17), cv::Size(17, 300), cv::Size(5, 90)}) {
        Frame all(of + cv::Size(3, 1)), out;
        for (int time = 0; time < 4; ++time) {
            cv::randu(all, 0, 65536);
            Frame in = all(cv::Rect({2, 0}, of)); // padded
            const Frame before = in.clone();
            denoiser.process(in, out);
            ASSERT_EQ(out.size(), of);
            if (of.width < 16) {
                EXPECT_EQ(cv::norm(out, before, cv::NORM_INF), 0);
            }
            cv::randu(all, 0, 65536);
            denoiser.process(in, in);
        }
    }
    for (const int value : {0, 65535}) {
        Frame out;
        for (int time = 0; time < 3; ++time)
            denoiser.process(Frame(size, static_cast<unsigned short>(value)), out);
        EXPECT_EQ(cv::norm(out, Frame(size, static_cast<unsigned short>(value)), cv::NORM_INF), 0);
    }
}

} // namespace

#include "camera/stages/Denoiser.h"

#include "tests/Support.h"

#include <opencv2/imgproc.hpp>

namespace {

using namespace velmo::camera;
using Values = cv::Mat_<float>;

const cv::Size size(160, 120);

/// What a camera adds to a scene, all in shares of `noise`: it is slow, as noise of uncooled sensors is, or
/// white.
struct Sensor
{
    float noise;
    bool slow = false;
    float stripes = 0; ///< of columns and rows, that change, and that stay
    float pattern = 0; ///< per pixel, stays
};

class Simulation
{
public:
    explicit Simulation(Sensor sensor)
        : m_oSensor(sensor), m_oSlow(normal(size)), m_oPattern(normal(size)),
          m_oColumns(normal({size.width, 1})), m_oRows(normal({1, size.height})),
          m_oFixedColumns(normal({size.width, 1}))
    {}

    Frame next(const Values& scene)
    {
        const Values fresh = normal(size);
        m_oSlow = 0.9F * m_oSlow + 0.436F * normal(size);
        m_oColumns = 0.9F * m_oColumns + 0.436F * normal({size.width, 1});
        m_oRows = 0.9F * m_oRows + 0.436F * normal({1, size.height});
        Values added =
            (m_oSensor.slow ? 0.9F * m_oSlow + 0.436F * fresh : fresh) + m_oSensor.pattern * m_oPattern;
        added += m_oSensor.stripes * (cv::repeat(m_oColumns + m_oFixedColumns, size.height, 1) +
                                      cv::repeat(m_oRows, 1, size.width));
        Frame frame;
        cv::Mat(scene + m_oSensor.noise * added).convertTo(frame, CV_16U);
        return frame;
    }

private:
    Values normal(cv::Size of)
    {
        Values values(of);
        m_oRandom.fill(values, cv::RNG::NORMAL, 0, 1);
        return values;
    }

    Sensor m_oSensor;
    cv::RNG m_oRandom{11};
    Values m_oSlow, m_oPattern, m_oColumns, m_oRows, m_oFixedColumns;
};

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

Values difference(const Frame& frame, const Values& scene)
{
    Values values;
    frame.convertTo(values, CV_32F);
    return values - scene;
}

/// Root mean square errors over some frames.
struct Errors
{
    double raw = 0, clean = 0, mean = 0;
};

Errors errorsOf(const Sensor& sensor, const Scene& scene, int from, int to)
{
    Simulation simulation(sensor);
    Denoiser denoiser({0.07F, 1});
    Errors errors;
    Frame out;
    for (int time = 0; time < to; ++time) {
        const Frame raw = simulation.next(scene(time));
        denoiser.process(raw, out);
        if (time < from)
            continue;
        const Values before = difference(raw, scene(time)), after = difference(out, scene(time));
        errors.raw += cv::mean(before.mul(before))[0] / (to - from);
        errors.clean += cv::mean(after.mul(after))[0] / (to - from);
        errors.mean += cv::mean(after - before)[0] / (to - from);
    }
    return {std::sqrt(errors.raw), std::sqrt(errors.clean), errors.mean};
}

/// The last frame with an object less the last one without it.
Values broughtBy(const Scene& object, const Scene& nothing, int frames)
{
    Values last[2];
    for (const bool there : {false, true}) {
        Simulation simulation({2, true, 0.3F});
        Denoiser denoiser({0.07F, 1});
        Frame out;
        for (int time = 0; time < frames; ++time)
            denoiser.process(simulation.next((there ? object : nothing)(time)), out);
        last[there ? 1 : 0] = difference(out, Values::zeros(size));
    }
    return last[1] - last[0];
}

const Scene still = [](int) { return wall(); };

TEST(Denoiser, HalvesTheErrorOfFlatScenesWhateverTheNoise)
{
    const Scene jumps = [](int time) {
        return wall(8000 + 150.0F * float(time / 15 % 2) + 0.7F * float(time));
    };
    for (const float noise : {0.7F, 2.0F, 7.0F, 30.0F})
        for (const Sensor& sensor : {Sensor{noise}, {noise, true}, {noise, true, 0.4F, 0.7F}})
            for (const Scene& scene : {still, jumps}) {
                const Errors errors = errorsOf(sensor, scene, 10, 40);
                const std::string what = std::to_string(noise) + (sensor.slow ? " slow" : " white") +
                                         (sensor.stripes > 0 ? ", stripes" : "");
                EXPECT_LE(errors.clean, 0.5 * errors.raw) << what;
                EXPECT_LE(std::abs(errors.mean), std::max(0.3, 0.03 * noise)) << what;
            }
}

TEST(Denoiser, CleansTheFirstFrameToo)
{
    const Errors errors = errorsOf({2}, still, 0, 1);
    EXPECT_LE(errors.clean, errors.raw / 2.6);
}

TEST(Denoiser, DoesNotRunAwayFromStripesOfItsOwnMaking)
{
    // Columns estimated against the result instead of the estimate diverge here.
    const Errors early = errorsOf({8, true, 0.4F}, still, 40, 60),
                 late = errorsOf({8, true, 0.4F}, still, 280, 300);
    EXPECT_LE(late.clean, 1.2 * early.clean);
    EXPECT_LE(late.clean, 0.3 * late.raw);
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
    const Scene pan = [&](int time) { return world(cv::Rect({2 * time, time / 2}, size)).clone(); };
    for (const float noise : {2.0F, 7.0F}) {
        const Errors errors = errorsOf({noise}, pan, 10, 60);
        EXPECT_LE(errors.clean, 0.9 * errors.raw) << noise;
    }
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

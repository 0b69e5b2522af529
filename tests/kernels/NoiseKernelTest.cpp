// Static pattern, temporal and spatial noise, downsizing.

#include "tests/kernels/KernelTest.h"
#include "vision/kernels/DownSizeKernel.h"
#include "vision/kernels/SpatialNoiseRemoverKernel.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"
#include "vision/kernels/TemporalNoiseReductionKernel.h"

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

/// Calm at both ends of the range, around zero and where carries are; edges; everything.
const auto scene = [](Random& random, cv::Size size) {
    const int height = random.pick({2, 60, 600, 1600, 4095, 9000, 65535});
    const int low = random.pick({-32768, 32767 - height, -height / 2, random(-32768, 32767 - height)});
    Frame frame = random.frame<short>(size, low, low + height);
    if (random.oneIn(4)) // mostly flat, as scenes are
        for (short& value : frame)
            value = random.oneIn(20) ? value : frame(0, 0);
    return frame;
};

/// What a form leaves in a part of a larger frame.
template <class Run>
Left written(cv::Size size, Run run)
{
    Frame canvas(size + cv::Size(5, 2), 99);
    Frame out = canvas(cv::Rect({2, 1}, size));
    run(out);
    return Left() << out;
}

KernelCase downsizing(const velmo::exp::Forms<Resize>& forms, cv::Size target)
{
    return kernel(forms, 60, [target](Random& random, int round, auto& form) {
        Frame in = scene(random, {240, 180});
        if (round == 0) // every value meets every remainder by three
            for (int n = 0; n < 180 * 240; ++n)
                in(n / 240, n % 240) = static_cast<short>(n * 65535LL / (180 * 240) - 32768 + n % 7);
        return written(target, [&](Frame& out) { form(in, out); });
    });
}

/// The first round of a gain climbs through all levels with activities from nothing to beyond the limit.
const auto climb = [](Random& random, int gain) {
    const auto level = [&](int, int c) { return 2 * c - 32768 + random(0, 1 + 8 * gain) * (c % 5) / 4; };
    return matrixOf<short>({32768, 6}, level);
};

/// Spikes of every height.
const auto spikes = [](int base) {
    Frame in(3, 3 * 4096, static_cast<short>(base));
    for (int n = 0; n < 4096; ++n)
        in(1, 3 * n + 1) = cv::saturate_cast<short>(base + n);
    return in;
};

/// A state within its limits, now and then one that a limit was lowered below.
template <class T>
cv::Mat_<T> states(Random& random, cv::Size size, int unit, int limit)
{
    const int most = unit * random.pick({0, 1, limit, limit, 31});
    cv::Mat_<T> all(size);
    for (T& state : all)
        state = random.oneIn(4) ? random(-5, 5) : random(-most - 1, most);
    return all;
}

template <class T>
KernelCase temporal(const velmo::exp::Forms<typename TemporalForms<T>::Filter>& forms, bool bMax,
                    const char* variant)
{
    const auto run = [bMax](Random& random, int round, auto& form) {
        const auto count = static_cast<std::size_t>(round < 700 ? round / 2 : random(0, 3000));
        const int height = random.pick({1, 15, 31, 63, 128, 2000, 65535});
        const int low =
            std::numeric_limits<T>::min() + random.pick({0, 65535 - height, random(0, 65535 - height)});
        // Far outside the contract: the same bits all the same.
        const bool bOutside = !bMax && random.oneIn(20);
        const int gain = bOutside ? 255 : random(0, 16), factor = bOutside ? 65535 : random(0, 2048);
        std::vector<unsigned short> weights(differenceTableSize);
        unsigned short* lut = weights.data() + differenceTableCentre;
        // Hold what is near and let go what is far, or any weights at all.
        const bool bCurve = !random.oneIn(4);
        for (int k = 0; k < 1024; ++k)
            lut[k] = lut[-k] =
                static_cast<unsigned short>(bCurve ? 32768 * 14 / std::max(k, 14) : random(0, 65535));
        std::vector<T> frame = random.values<T>(count, low, low + height),
                       state = random.values<T>(count, low, low + height);
        if (random.oneIn(4)) { // where the ranges of what is looked up end
            const int step = random.pick({15, 16, 31, 32, 63, 64}) * random.pick({1, -1});
            for (std::size_t n = 0; n < count; ++n)
                state[n] = cv::saturate_cast<T>(frame[n] + (random.oneIn(2) ? step : 0));
        }
        Feedback feedback{lut, bMax ? 16 : gain, bMax ? 2048 : factor};
        const std::vector<unsigned short> pulls = bMax ? pullsMaxParam(feedback) : pullsAnyParam(feedback);
        feedback.pulls = &pulls;
        form(frame.data(), state.data(), count, feedback);
        return Left() << frame << state;
    };
    return kernel(forms, 1000, run, variant);
}

} // namespace

std::vector<KernelCase> noiseKernels()
{
    std::vector<KernelCase> all{
        downsizing(resizeToTwoThirds, {160, 120}),
        downsizing(resizeToHalf, {120, 90}),
        temporal<short>(TemporalForms<short>::anyParam, false, " signed"),
        temporal<short>(TemporalForms<short>::maxParam, true, " signed"),
        temporal<unsigned short>(TemporalForms<unsigned short>::anyParam, false, " unsigned"),
        temporal<unsigned short>(TemporalForms<unsigned short>::maxParam, true, " unsigned"),
    };
    all.push_back(kernel(removeSpatialNoise, 700, [](Random& random, int round, auto& form) {
        const int gain = round < 37 ? 1 + round % 31 : random(1, 31);
        const Frame in = round < 31   ? climb(random, gain)
                         : round < 37 ? spikes(random.pick({-32768, 0, 30000}))
                                      : scene(random, {1 + round % 150, random(1, 5)});
        return written(in.size(), [&](Frame& out) { form(in, out, gain); });
    }));
    all.push_back(kernel(removeStaticPattern, 3000, [](Random& random, int round, auto& form) {
        const cv::Size size(1 + round % 300, random(1, 6));
        const int threshold = random.pick({0, 1, 30, 100, random(0, 100)});
        const PatternParameters parameters{threshold, threshold * 7 / 10, random(0, 31), random(0, 31)};
        const Frame in = scene(random, size), next = scene(random, size);
        auto columns = states<int>(random, {size.width, 1}, 8192, parameters.lineLimit),
             pixels = states<int>(random, size, 256, parameters.frameLimit);
        std::vector<short> scratch;
        Left left = written(size, [&](Frame& out) {
            for (const Frame& frame : {in, next})
                form(frame, out, columns, pixels, parameters, scratch);
        });
        return left << columns << pixels;
    }));
    return all;
}

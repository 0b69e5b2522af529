#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/id/Palette.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/imgproc/ColorPaletteManager.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"
#include "vision/kernels/SpatialNoiseRemoverKernel.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"
#include "vision/kernels/TemporalNoiseReductionKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>
#include <vector>

using namespace velmo::exp::vision;
using velmo::vision::ColorPaletteConverter;

namespace {

using Frame = cv::Mat_<short>;
using Picture = ColorPaletteConverter::Picture;

constexpr PatternParameters patternParameters{30, 21, 31, 31};
constexpr int temporalGain = 12, temporalFactor = 1800, spatialGain = 8;
constexpr unsigned short coldest = 7800, hottest = 9900;

cv::Mat_<unsigned short> asUnsigned(Frame& frame)
{
    return {frame.rows, frame.cols, reinterpret_cast<unsigned short*>(frame[0]), frame.step};
}

/// From the raw frame to the picture: column and pixel offsets, temporal noise, spatial noise, colour.
struct Ours
{
    Ours() { converter.resizeLookupTable(coldest, hottest, palette()); }

    static std::vector<unsigned char>& palette()
    {
        static std::vector<unsigned char> colors = [] {
            using Manager = velmo::vision::ColorPaletteManager;
            Manager::loadPalettes({}); // by itself only as long as no other job has loaded a palette
            return Manager::getPaletteColors(velmo::vision::Id::Palette::Ironbow);
        }();
        return colors;
    }

    void process(const Frame& in)
    {
        pattern.process(in, frame);
        temporal.process(frame);
        spatial.process(frame, smooth);
        picture.create(in.size());
        converter.palletizeFast(asUnsigned(smooth), picture);
    }

    StaticPatternRemover pattern{patternParameters.threshold, patternParameters.lineLimit,
                                 patternParameters.frameLimit};
    TemporalNoiseReduction<short> temporal{temporalGain, temporalFactor};
    SpatialNoiseRemover spatial{spatialGain};
    ColorPaletteConverter converter{true};
    Frame frame, smooth;
    Picture picture;
};

/// The same steps, plainly.
struct Plain
{
    explicit Plain(cv::Size size)
        : columns(1, size.width, 0), pixels(size.height, size.width, 0), frame(size), smooth(size),
          picture(size), weights(differenceTableSize), table(velmo::vision::tableEntries)
    {
        for (int k = 0; k < 1024; ++k)
            lut()[k] = lut()[-k] = mg_aFeedbackStrength[static_cast<std::size_t>(k)];
        const auto stretched = velmo::vision::stretchPalette(Ours::palette(), hottest - coldest + 1, true);
        velmo::vision::fillTable.plain(table.data(), stretched.data(), coldest, hottest);
    }

    unsigned short* lut() { return weights.data() + differenceTableCentre; }

    void process(const Frame& in)
    {
        removeStaticPattern.plain(in, frame, columns, pixels, patternParameters, scratch);
        if (state.empty())
            state = frame.clone();
        TemporalForms<short>::anyParam.plain(frame[0], state[0], frame.total(),
                                             {lut(), temporalGain, temporalFactor});
        removeSpatialNoise.plain(frame, smooth, spatialGain);
        velmo::vision::palettize.plain(asUnsigned(smooth)[0], picture.data, smooth.total(), table.data());
    }

    cv::Mat_<int> columns, pixels;
    Frame frame, smooth, state;
    Picture picture;
    std::vector<unsigned short> weights;
    std::vector<unsigned int> table;
    std::vector<short> scratch;
};

/// What a user would string together instead: a fixed pattern, a fixed weight, no test for motion.
struct Peer
{
    explicit Peer(cv::Size size) : pattern(size, 5), mean(size, 8000) {}

    void average(const cv::Mat_<unsigned short>& in)
    {
        cv::subtract(in, pattern, difference);
        cv::accumulateWeighted(difference, mean, 0.25);
    }

    void color(const cv::Mat& frame)
    {
        cv::normalize(frame, grey, 0, 255, cv::NORM_MINMAX, CV_8U);
        cv::applyColorMap(grey, picture, cv::COLORMAP_JET);
    }

    void simple(const cv::Mat_<unsigned short>& in)
    {
        average(in);
        mean.convertTo(rounded, CV_16U);
        cv::medianBlur(rounded, median, 3);
        color(median);
    }

    void bilateral(const cv::Mat_<unsigned short>& in)
    {
        average(in);
        cv::bilateralFilter(mean, smooth, 3, 30, 1);
        color(smooth);
    }

    cv::Mat_<unsigned short> pattern, difference, rounded, median;
    cv::Mat_<float> mean, smooth;
    cv::Mat grey, picture;
};

struct Stream
{
    explicit Stream(cv::Size size)
        : raw{scene(size, 1), scene(size, 2)}, inputs{asSigned(raw[0]), asSigned(raw[1])}, plain(size),
          peer(size)
    {}

    bool agrees()
    {
        bool equal = true;
        for (const int n : {0, 1, 0, 1}) {
            ours.process(inputs[n]);
            plain.process(inputs[n]);
            equal = equal && cv::norm(ours.picture, plain.picture, cv::NORM_INF) == 0 &&
                    cv::countNonZero(ours.smooth != plain.smooth) == 0;
        }
        return equal;
    }

    int next() { return turn ^= 1; }

    cv::Mat_<unsigned short> raw[2];
    Frame inputs[2];
    Ours ours;
    Plain plain;
    Peer peer;
    int turn = 0;
};

Job pipeline(cv::Size size)
{
    const auto stream = std::make_shared<Stream>(size);
    const auto pixels = static_cast<std::size_t>(size.area());
    Job job(29 * pixels, pixels);
    job.check(stream->agrees());
    job.ours([stream] { stream->ours.process(stream->inputs[stream->next()]); });
    job.plain([stream] { stream->plain.process(stream->inputs[stream->next()]); });
    job.peer("OpenCV chain", [stream] { stream->peer.simple(stream->raw[stream->next()]); });
    job.peer("bilateral chain", [stream] { stream->peer.bilateral(stream->raw[stream->next()]); });
    if (size.width == 240)
        job.atLeast(1.7, "OpenCV chain").atMost(8, "memcpy");
    if (size.width == 640)
        job.atLeast(28, "plain")
            .from("x86-64-v3")
            .atMost(1.0, "OpenCV chain")
            .from("x86-64-v3")
            .atLeast(2, "bilateral chain")
            .instructions(48);
    if (size.width == 1280)
        job.atMost(1.05, "OpenCV chain").from("x86-64-v3");
    return job;
}

const Registration registration("pipeline", pipeline);

} // namespace

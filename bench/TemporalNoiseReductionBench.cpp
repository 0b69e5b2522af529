#include "vision/imgproc/TemporalNoiseReduction.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/TemporalNoiseReductionKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

/// A stream that sees the same two frames in turn, filtered by us, by the plain form and by a peer.
struct Stream
{
    Stream(const cv::Mat_<unsigned short>& first, const cv::Mat_<unsigned short>& second, int controlGain,
           int feedbackFactor)
        : inputs{asSigned(first), asSigned(second)}, gain(controlGain), factor(feedbackFactor),
          filter(static_cast<unsigned char>(controlGain), static_cast<unsigned short>(feedbackFactor)),
          table(differenceTableSize), state(inputs[0].clone())
    {
        for (int k = 0; k < 1024; ++k)
            lut()[k] = lut()[-k] = mg_aFeedbackStrength[static_cast<std::size_t>(k)];
        Frame start = inputs[0].clone();
        filter.process(start);
    }

    unsigned short* lut() { return table.data() + differenceTableCentre; }

    void next() { inputs[turn ^= 1].copyTo(frame); }

    void ours() { filter.process(frame); }

    void plain()
    {
        if (gain == 16 && factor == 2048)
            TemporalForms<short>::maxParam.plain(frame[0], state[0], frame.total(), {lut()});
        else
            TemporalForms<short>::anyParam.plain(frame[0], state[0], frame.total(), {lut(), gain, factor});
    }

    bool agrees()
    {
        next();
        ours();
        const Frame expected = frame.clone();
        inputs[turn].copyTo(frame);
        plain();
        return cv::countNonZero(frame != expected) == 0;
    }

    Frame inputs[2];
    int gain, factor;
    TemporalNoiseReduction<short> filter;
    std::vector<unsigned short> table;
    Frame state, frame, blended;
    int turn = 0;
};

Job temporal(const cv::Mat_<unsigned short>& first, const cv::Mat_<unsigned short>& second, int gain,
             int factor)
{
    const auto stream = std::make_shared<Stream>(first, second, gain, factor);
    Job job(8 * first.total(), first.total());
    job.check(stream->agrees());
    const auto next = [stream] { stream->next(); };
    job.ours([stream] { stream->ours(); }).before(next);
    job.plain([stream] { stream->plain(); }).before(next);
    // A fixed weight and no test for motion.
    job.peer("addWeighted",
             [stream] { cv::addWeighted(stream->frame, 0.25, stream->state, 0.75, 0, stream->state); })
        .before(next);
    return job;
}

Job anyParameters(cv::Size size)
{
    Job job = temporal(scene(size, 1), scene(size, 2), 12, 1800);
    if (size.width == 240)
        job.atMost(6, "memcpy");
    if (size.width == 640)
        job.atLeast(4.5, "plain");
    return job;
}

Job maximumParameters(cv::Size size)
{
    Job job = temporal(scene(size, 1), scene(size, 2), 16, 2048);
    if (size.width == 240)
        job.atMost(6, "memcpy");
    if (size.width == 640)
        job.atLeast(3.8, "plain");
    return job;
}

Job randomDifferences(cv::Size size)
{
    Job job = temporal(noise(size, 1), noise(size, 2), 12, 1800);
    if (size.width == 640)
        job.atLeast(3.5, "plain");
    return job;
}

const Registration any("temporal any parameters", anyParameters);
const Registration maximum("temporal maximum", maximumParameters);
const Registration random("temporal random", randomDifferences);

} // namespace

#include "vision/imgproc/TemporalNoiseReduction.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/TemporalNoiseReductionKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

/// A stream that sees the same two frames in turn.
struct Stream
{
    Stream(const cv::Mat_<unsigned short>& first, const cv::Mat_<unsigned short>& second, int gain,
           int factor)
        : inputs{asSigned(first), asSigned(second)}, weights(differenceTableSize),
          state(inputs[0].clone()), feedback{weights.data() + differenceTableCentre, gain, factor}
    {
        unsigned short* lut = weights.data() + differenceTableCentre;
        for (int k = 0; k < 1024; ++k)
            lut[k] = lut[-k] = mg_aFeedbackStrength[static_cast<std::size_t>(k)];
        pulls = gain == 16 && factor == 2048 ? pullsMaxParam(feedback) : pullsAnyParam(feedback);
        feedback.pulls = &pulls;
    }

    void next() { inputs[turn ^= 1].copyTo(frame); }

    Frame inputs[2];
    std::vector<unsigned short> weights, pulls;
    Frame state, frame;
    Feedback feedback;
    int turn = 0;
};

Job temporal(const cv::Mat_<unsigned short>& first, const cv::Mat_<unsigned short>& second, int gain,
             int factor)
{
    const auto stream = std::make_shared<Stream>(first, second, gain, factor);
    const bool bMax = gain == 16 && factor == 2048;
    const auto next = [stream] { stream->next(); };
    Job job(8 * first.total(), first.total());
    job.loop(
        bMax ? TemporalForms<short>::maxParam : TemporalForms<short>::anyParam,
        [stream](auto& form) {
            form(stream->frame[0], stream->state[0], stream->frame.total(), stream->feedback);
        },
        next);
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
        job.atLeast(4.5, "plain").instructions(2.14);
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
        job.atLeast(3.5, "plain").instructions(8.53);
    return job;
}

/// Two frames after a setter: the state is made of the first, the table for the second; beside two later
/// ones.
Job afterSetter(cv::Size size)
{
    const auto filter = std::make_shared<TemporalNoiseReduction<short>>(static_cast<unsigned char>(12),
                                                                        static_cast<unsigned short>(1800));
    const Frame first = asSigned(scene(size, 1)), second = asSigned(scene(size, 2));
    const auto two = [=] {
        Frame frames[] = {first.clone(), second.clone()};
        for (Frame& frame : frames)
            filter->process(frame);
    };
    Job job(16 * first.total(), 2 * first.total());
    job.ours([=] {
        filter->setControlGain(12);
        two();
    });
    job.peer("later frames", two);
    if (size.width == 640)
        job.atMost(1.3, "later frames");
    return job;
}

const Registration any("temporal any parameters", anyParameters);
const Registration maximum("temporal maximum", maximumParameters);
const Registration random("temporal random", randomDifferences);
const Registration setter("temporal after a setter", afterSetter);

} // namespace

#include "vision/imgproc/SpatialNoiseRemover.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/SpatialNoiseRemoverKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

struct Frames
{
    cv::Mat_<short> in, out, expected, blurred;
    cv::Mat_<unsigned short> raw, median;
    cv::Mat_<float> real, bilateral;
};

Job spatial(cv::Size size)
{
    constexpr int gain = 8;
    const auto frames = std::make_shared<Frames>();
    frames->raw = scene(size);
    frames->in = asSigned(frames->raw);
    frames->in.convertTo(frames->real, CV_32F);
    frames->expected.create(size);
    const auto filter = std::make_shared<SpatialNoiseRemover>(gain);
    filter->process(frames->in, frames->out);
    removeSpatialNoise.plain(frames->in, frames->expected, gain);

    Job job(4 * frames->in.total(), frames->in.total());
    job.check(cv::countNonZero(frames->out != frames->expected) == 0);
    job.ours([=] { filter->process(frames->in, frames->out); });
    job.plain([=] { removeSpatialNoise.plain(frames->in, frames->expected, gain); });
    // Smooths edges away.
    job.peer("GaussianBlur", [=] { cv::GaussianBlur(frames->in, frames->blurred, {3, 3}, 0); });
    job.peer("medianBlur", [=] { cv::medianBlur(frames->raw, frames->median, 3); });
    // Keeps edges, as ours does; knows no 16-bit frames.
    job.peer("bilateralFilter", [=] { cv::bilateralFilter(frames->real, frames->bilateral, 3, 30, 1); });
    if (size.width == 640)
        job.atLeast(18, "plain").atMost(1.4, "GaussianBlur").atLeast(7, "bilateralFilter");
    return job;
}

const Registration registration("spatial", spatial);

} // namespace

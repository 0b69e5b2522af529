#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/SpatialNoiseRemoverKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

struct Frames
{
    explicit Frames(cv::Size size) : raw(scene(size)), in(asSigned(raw)), out(size)
    {
        in.convertTo(real, CV_32F);
    }

    cv::Mat_<unsigned short> raw, median;
    cv::Mat_<short> in, out, blurred;
    cv::Mat_<float> real, bilateral;
};

Job spatial(cv::Size size)
{
    const auto frames = std::make_shared<Frames>(size);
    Job job(4 * frames->in.total(), frames->in.total());
    job.loop(removeSpatialNoise, [=](auto& form) { form(frames->in, frames->out, 8); });
    // Smooths edges away.
    job.peer("GaussianBlur", [=] { cv::GaussianBlur(frames->in, frames->blurred, {3, 3}, 0); });
    job.peer("medianBlur", [=] { cv::medianBlur(frames->raw, frames->median, 3); });
    // Keeps edges, as ours does; knows no 16-bit frames.
    job.peer("bilateralFilter", [=] { cv::bilateralFilter(frames->real, frames->bilateral, 3, 30, 1); });
    if (size.width == 640)
        job.atLeast(18, "plain").atMost(1.4, "GaussianBlur").atLeast(7, "bilateralFilter").instructions(12.6);
    return job;
}

const Registration registration("spatial", spatial);

} // namespace

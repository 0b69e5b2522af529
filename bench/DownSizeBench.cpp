#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/DownSizeKernel.h"

#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

struct Frames
{
    Frames(cv::Size size, cv::Size target) : in(asSigned(scene(size))), out(target) {}

    cv::Mat_<short> in, out, peer;
};

/// The bytes count the rows read and the output written, not what goes through temporary rows.
Job downSize(cv::Size size, cv::Size target, const velmo::exp::Forms<Resize>& forms)
{
    const auto frames = std::make_shared<Frames>(size, target);
    const auto pixels = static_cast<std::size_t>(size.area());
    Job job(2 * (pixels + static_cast<std::size_t>(target.area())), pixels);
    job.loop(forms, [=](auto& form) { form(frames->in, frames->out); });
    job.peer("INTER_LINEAR", [=] { cv::resize(frames->in, frames->peer, target, 0, 0, cv::INTER_LINEAR); });
    job.peer("INTER_AREA", [=] { cv::resize(frames->in, frames->peer, target, 0, 0, cv::INTER_AREA); });
    return job;
}

Job twoThirds(cv::Size size)
{
    Job job = downSize(size, {160, 120}, resizeToTwoThirds);
    job.atLeast(3.5, "plain")
        .atLeast(2.4, "INTER_LINEAR")
        .atLeast(8, "INTER_AREA")
        .atMost(10, "memcpy")
        .instructions(2.03);
    return job;
}

Job half(cv::Size size)
{
    Job job = downSize(size, {120, 90}, resizeToHalf);
    job.atLeast(6, "plain")
        .atMost(1.05, "INTER_LINEAR")
        .atMost(1.05, "INTER_AREA")
        .atMost(4.5, "memcpy")
        .instructions(0.96);
    return job;
}

const Registration registrationTwoThirds("downsize 2/3", twoThirds, {{240, 180}});
const Registration registrationHalf("downsize 1/2", half, {{240, 180}});

} // namespace

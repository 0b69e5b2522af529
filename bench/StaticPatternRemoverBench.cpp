#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"

#include <memory>

using namespace velmo::exp::vision;

namespace {

/// A stream that sees the same two frames in turn.
struct Stream
{
    explicit Stream(cv::Size size)
        : inputs{asSigned(scene(size, 1)), asSigned(scene(size, 2))}, out(size), columns(1, size.width, 0),
          pixels(size, 0)
    {}

    cv::Mat_<short> inputs[2], out;
    cv::Mat_<int> columns, pixels;
    std::vector<short> scratch;
    int turn = 0;
};

Job staticPattern(cv::Size size)
{
    const auto stream = std::make_shared<Stream>(size);
    const auto pixels = static_cast<std::size_t>(size.area());
    Job job(12 * pixels, pixels);
    job.loop(removeStaticPattern, [stream](auto& form) {
        Stream& s = *stream;
        form(s.inputs[s.turn ^= 1], s.out, s.columns, s.pixels, {30, 21, 31, 31}, s.scratch);
    });
    if (size.width == 240)
        job.atMost(15, "memcpy").atLeast(29, "plain").from("x86-64-v3");
    if (size.width == 640)
        job.atLeast(18, "plain").atLeast(29, "plain").from("x86-64-v3").instructions(29);
    return job;
}

const Registration registration("static pattern", staticPattern);

} // namespace

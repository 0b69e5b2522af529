#include "vision/imgproc/StaticPatternRemover.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"

#include <memory>

using namespace velmo::exp::vision;

namespace {

constexpr PatternParameters parameters{30, 21, 31, 31};

/// A stream that sees the same two frames in turn, filtered by us and by the plain form.
struct Stream
{
    explicit Stream(cv::Size size)
        : inputs{asSigned(scene(size, 1)), asSigned(scene(size, 2))},
          columns(cv::Mat_<int>::zeros(1, size.width)), pixels(cv::Mat_<int>::zeros(size)), expected(size)
    {}

    void ours()
    {
        turn ^= 1;
        remover.process(inputs[turn], out);
    }

    void plain()
    {
        turn ^= 1;
        removeStaticPattern.plain(inputs[turn], expected, columns, pixels, parameters, scratch);
    }

    bool agrees()
    {
        bool equal = true;
        for (int n = 0; n < 5; ++n) {
            ours();
            turn ^= 1;
            plain();
            equal = equal && cv::countNonZero(out != expected) == 0;
        }
        return equal;
    }

    cv::Mat_<short> inputs[2];
    StaticPatternRemover remover{parameters.threshold, parameters.lineLimit, parameters.frameLimit};
    cv::Mat_<int> columns, pixels;
    cv::Mat_<short> out, expected;
    std::vector<short> scratch;
    int turn = 0;
};

Job staticPattern(cv::Size size)
{
    const auto stream = std::make_shared<Stream>(size);
    Job job(12 * static_cast<std::size_t>(size.area()), static_cast<std::size_t>(size.area()));
    job.check(stream->agrees());
    job.ours([stream] { stream->ours(); });
    job.plain([stream] { stream->plain(); });
    if (size.width == 240)
        job.atMost(15, "memcpy");
    if (size.width == 640)
        job.atLeast(18, "plain");
    return job;
}

const Registration registration("static pattern", staticPattern);

} // namespace

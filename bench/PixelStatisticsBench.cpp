#include "camera/pixels/PixelStatistics.h"

#include "bench/Bench.h"
#include "bench/Scene.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>
#include <vector>

using namespace velmo::camera;

namespace {

/// One frame more in the running figures of the search for defective pixels.
Job statistics(cv::Size size)
{
    const auto pixels = static_cast<std::size_t>(size.area());
    const auto running = std::make_shared<PixelStatistics>();
    Job job(92 * pixels, pixels); // 44 are kept, read and written; the frame and the first one
    job.ours([=, frames = std::vector<Frame>{scene(size, 1), scene(size, 2)}, n = 0U]() mutable {
        running->add(frames[n++ % 2]);
    });
    // A part of it that it cannot do without: the median around each pixel.
    job.peer("medianBlur 5x5",
             [frame = scene(size), out = Frame()]() mutable { cv::medianBlur(frame, out, 5); });
    if (size.width == 640) // a camera of 60 frames a second would do with three and a half times
        job.atMost(2, "medianBlur 5x5").from("x86-64-v3");
    return job;
}

/// A loop over five neighbouring lines each.
template <class Loop, class Run>
Job overLines(cv::Size size, const Loop& loop, Run run)
{
    const cv::Mat_<short> values = asSigned(scene(size));
    Job job(6 * values.total(), values.total());
    return job.loop(loop, [=](auto& form) mutable {
        for (int y = 0; y < values.rows; ++y) {
            const short* lines[5];
            for (int k = 0; k < 5; ++k)
                lines[k] = values[std::clamp(y - 2, 0, values.rows - 5) + k];
            run(form, lines, values.cols);
        }
    });
}

Job surroundings(cv::Size size)
{
    const auto width = static_cast<std::size_t>(size.width);
    return overLines(size, lookAround,
                     [scratch = std::vector<short>(5 * width), median = std::vector<short>(width),
                      calm = std::vector<short>(width)](auto& form, const short* const lines[5],
                                                        int count) mutable {
                         form(lines, count, scratch.data(), {median.data(), calm.data()});
                     })
        .atLeast(100, "plain")
        .from("x86-64-v3");
}

Job peaks(cv::Size size)
{
    return overLines(size, standOut,
                     [out = std::vector<int>(static_cast<std::size_t>(size.width))](
                         auto& form, const short* const lines[5], int count) mutable {
                         form(lines[1], lines[2], lines[3], count, out.data());
                     })
        .atLeast(6, "plain")
        .from("x86-64-v3");
}

const Registration ofFrame("defective pixels, a frame more", statistics);
const Registration ofSurroundings("defective pixels, what is around", surroundings, {{640, 480}});
const Registration ofPeaks("defective pixels, what stands out", peaks, {{640, 480}});

} // namespace

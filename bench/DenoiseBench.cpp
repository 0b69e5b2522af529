#include "bench/Bench.h"
#include "bench/Scene.h"
#include "camera/stages/Denoiser.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <memory>

using namespace velmo::camera;

namespace {

/// A few frames of one scene with fresh noise, again and again.
struct Stream
{
    /// @param step  of a camera that pans to and fro, in pixels a frame
    explicit Stream(cv::Size size, int step = 0) : out(size)
    {
        cv::RNG random(5);
        const int count = static_cast<int>(frames.size());
        cv::Mat_<float> values;
        scene(size + cv::Size(step * count, 0)).convertTo(values, CV_32F);
        cv::Mat_<float> texture(values.size()); // the camera's way can be told by that
        random.fill(texture, cv::RNG::NORMAL, 0, 300);
        cv::GaussianBlur(texture, texture, {}, 3);
        values += texture;
        for (int i = 0; i < count; ++i) {
            cv::Mat_<float> noise(size);
            random.fill(noise, cv::RNG::NORMAL, 0, 4);
            const cv::Mat seen = values(cv::Rect({step * std::min(i, count - i), 0}, size));
            cv::Mat(seen + noise).convertTo(frames[static_cast<std::size_t>(i)], CV_16U);
        }
    }

    /// Each filter counts for itself: one that met the same frame again and again would have nothing to do.
    const Frame& next(std::size_t filter) { return frames[numbers[filter]++ % frames.size()]; }

    std::array<Frame, 8> frames;
    std::array<std::size_t, 4> numbers{};
    Denoiser denoiser{{0.07F, 1}};
    Frame out, median, average;
    cv::Mat_<float> real, bilateral, mean;
};

Job denoise(cv::Size size)
{
    const auto stream = std::make_shared<Stream>(size);
    Job job(4 * static_cast<std::size_t>(size.area()), static_cast<std::size_t>(size.area()));
    job.ours([=] { stream->denoiser.process(stream->next(0), stream->out); });
    // Neither finds out how large the noise is, nor sees stripes.
    job.peer("medianBlur", [=] { cv::medianBlur(stream->next(1), stream->median, 3); });
    job.peer("bilateralFilter", [=] {
        stream->next(2).convertTo(stream->real, CV_32F);
        cv::bilateralFilter(stream->real, stream->bilateral, 5, 12, 1.5);
    });
    job.peer("accumulateWeighted", [=] {
        if (stream->mean.empty())
            stream->next(3).convertTo(stream->mean, CV_32F);
        cv::accumulateWeighted(stream->next(3), stream->mean, 0.1);
        stream->mean.convertTo(stream->average, CV_16U);
    });
    if (size.width == 640)
        job.atMost(1.5, "bilateralFilter");
    return job;
}

/// Every frame of a camera that moves is compared with an estimate that has to move, too.
Job denoiseMoving(cv::Size size)
{
    const auto moving = std::make_shared<Stream>(size, 2), still = std::make_shared<Stream>(size);
    Job job(4 * static_cast<std::size_t>(size.area()), static_cast<std::size_t>(size.area()));
    job.ours([=] { moving->denoiser.process(moving->next(0), moving->out); });
    job.peer("still", [=] { still->denoiser.process(still->next(0), still->out); });
    if (size.width == 640)
        job.atMost(1.8, "still");
    return job;
}

const Registration registration("denoise", denoise), moving("denoise, camera moves", denoiseMoving);

} // namespace

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/imgproc/ColorConvert.h"
#include "vision/kernels/ColorConvertKernel.h"

#include <libyuv.h>
#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::vision;

namespace {

/// Bytes in which every value is about as likely as any other.
cv::Mat bytes(cv::Size size, int channels)
{
    cv::Mat image(size, CV_8UC(channels));
    const cv::Mat values = noise({size.width * channels, size.height});
    values.convertTo(image.reshape(1), CV_8U, 1.0 / 257);
    return image;
}

/// A source and what is made of it.
struct Frame
{
    Frame(cv::Size size, int sourceChannels)
        : source(bytes(size, sourceChannels)), out(size, CV_8UC3), peer(size, CV_8UC3), between(size, CV_8UC4)
    {}

    cv::Mat source, out, peer, between;
};

using Conversion = velmo::exp::Forms<ConvertPixels>;

/// @param bytesOut  of a pixel
Job conversion(const std::shared_ptr<Frame>& frame, const Conversion& forms, std::size_t bytesOut = 3)
{
    const std::size_t pixels = frame->source.total();
    return Job(pixels * (frame->source.elemSize() + bytesOut), pixels).loop(forms, [=](auto& form) {
        form(frame->source.data, frame->out.data, pixels);
    });
}

Job packed(cv::Size size, const Conversion& forms, double instructions)
{
    const auto frame = std::make_shared<Frame>(size, 2);
    Job job = conversion(frame, forms);
    job.peer("cvtColor", [frame] { cv::cvtColor(frame->source, frame->peer, cv::COLOR_YUV2BGR_UYVY); });
    // Other rounding, and no way that leads to three bytes at once.
    job.peer("libyuv", [frame] {
        const int width = frame->source.cols, height = frame->source.rows;
        libyuv::UYVYToARGB(frame->source.data, 2 * width, frame->between.data, 4 * width, width, height);
        libyuv::ARGBToRGB24(frame->between.data, 4 * width, frame->peer.data, 3 * width, width, height);
    });
    if (size.width == 640)
        job.atLeast(9, "plain").atMost(0.7, "cvtColor").atMost(1.6, "libyuv").instructions(instructions);
    return job;
}

Job threeToThree(cv::Size size, const Conversion& forms, int code)
{
    const auto frame = std::make_shared<Frame>(size, 3);
    return conversion(frame, forms).peer("cvtColor", [=] { cv::cvtColor(frame->source, frame->peer, code); });
}

Job decode(cv::Size size)
{
    Job job = threeToThree(size, ycbcrToBgr, cv::COLOR_YCrCb2BGR);
    if (size.width == 640)
        job.atLeast(6, "plain").atMost(1.5, "cvtColor").instructions(8);
    return job;
}

Job encode(cv::Size size, const Conversion& forms, int code)
{
    Job job = threeToThree(size, forms, code);
    if (size.width == 640)
        job.atLeast(2.4, "plain").atMost(1.25, "cvtColor").instructions(9.35);
    return job;
}

Job yuv2(cv::Size size)
{
    Job job = conversion(std::make_shared<Frame>(size, 3), ycbcrToYuv2, 2);
    if (size.width == 640)
        job.atLeast(5, "plain").atMost(1.4, "memcpy");
    return job;
}

Job swap(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 3);
    const std::size_t pixels = frame->source.total();
    Job job(6 * pixels, pixels);
    job.loop(swapRb, [=](auto& form) { form(frame->out.data, frame->out.data, pixels); });
    job.peer("cvtColor", [frame] { cv::cvtColor(frame->peer, frame->peer, cv::COLOR_RGB2BGR); });
    if (size.width == 640)
        job.atLeast(4.5, "plain").atMost(0.5, "cvtColor").instructions(1);
    return job;
}

/// The lag alone, and the whole conversion with the step that OpenCV does.
Job lag(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 2);
    const std::size_t pixels = frame->source.total();
    return Job(5 * pixels, pixels).loop(lagYuyv, [=](auto& form) {
        form(frame->source.data, frame->out.data, 0, pixels);
    });
}

Job yuyv(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 2);
    const auto lumaChroma = std::make_shared<cv::Mat>(size, CV_8UC3);
    const auto ours = [frame] {
        ColorConvert::Image out(frame->out);
        ColorConvert::convertYUYVToBGR(frame->source, out);
    };
    const auto stage = [lumaChroma](cv::Mat& out) { cv::cvtColor(*lumaChroma, out, cv::COLOR_YCrCb2BGR); };
    const auto plain = [frame, lumaChroma, stage] {
        lagYuyv.plain(frame->source.data, lumaChroma->data, 0, frame->source.total());
        stage(frame->peer);
    };
    ours();
    plain();
    Job job(5 * frame->source.total(), frame->source.total());
    job.check(cv::norm(frame->out, frame->peer, cv::NORM_INF) == 0).ours(ours).plain(plain);
    job.peer("cvtColor stage", [frame, stage] { stage(frame->peer); });
    if (size.width == 640)
        job.atLeast(1.5, "plain").atMost(1.3, "cvtColor stage").instructions(7.2);
    return job;
}

template <class Make, class... Arguments>
auto with(Make make, Arguments... arguments)
{
    return [=](cv::Size size) { return make(size, arguments...); };
}

const Registration registrations[] = {
    {"UYVY to BGR", with(packed, uyvyToBgr, 8.7)},
    {"UYVY to RGB", with(packed, uyvyToRgb, 8.7)},
    {"UY1VY0 to BGR", with(packed, uy1vy0ToBgr, 9.6)},
    {"UY1VY0 to RGB", with(packed, uy1vy0ToRgb, 9.6)},
    {"YCbCr to BGR", decode},
    {"BGR to YCbCr", with(encode, bgrToYcbcr, cv::COLOR_BGR2YCrCb)},
    {"RGB to YCbCr", with(encode, rgbToYcbcr, cv::COLOR_RGB2YCrCb)},
    {"YCbCr to YUV2", yuv2},
    {"swapRB", swap},
    {"lag of YUYV", lag},
    {"YUYV to BGR", yuyv},
};

} // namespace

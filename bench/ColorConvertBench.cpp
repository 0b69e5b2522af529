#include "vision/imgproc/ColorConvert.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/ColorConvertKernel.h"

#include <libyuv.h>
#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::vision;

namespace {

using Image = ColorConvert::Image;

/// Bytes in which every value is about as likely as any other.
cv::Mat bytes(cv::Size size, int channels)
{
    cv::Mat image(size, CV_8UC(channels));
    const cv::Mat values = noise({size.width * channels, size.height});
    values.convertTo(image.reshape(1), CV_8U, 1.0 / 257);
    return image;
}

bool same(const cv::Mat& a, const cv::Mat& b)
{
    return cv::norm(a, b, cv::NORM_INF) == 0;
}

/// A source and what the forms make of it.
struct Frame
{
    Frame(cv::Size size, int sourceChannels, int channels = 3)
        : source(bytes(size, sourceChannels)), ours(size, CV_8UC(channels)), plain(ours.clone()),
          peer(ours.clone()), between(size, CV_8UC4), pixels(source.total())
    {}

    cv::Mat source, ours, plain, peer, between;
    std::size_t pixels;
};

using Converter = void (*)(const cv::Mat&, Image&);

Job image(const std::shared_ptr<Frame>& frame, Converter ours, ConvertPixels* plain)
{
    Job job(frame->pixels * (frame->source.elemSize() + 3), frame->pixels);
    const auto convert = [frame, ours] {
        Image out(frame->ours);
        ours(frame->source, out);
    };
    const auto define = [frame, plain] { plain(frame->source.data, frame->plain.data, frame->pixels); };
    convert();
    define();
    return job.check(same(frame->ours, frame->plain)).ours(convert).plain(define);
}

Job packed(cv::Size size, Converter ours, ConvertPixels* plain)
{
    const auto frame = std::make_shared<Frame>(size, 2);
    Job job = image(frame, ours, plain);
    job.peer("cvtColor", [frame] { cv::cvtColor(frame->source, frame->peer, cv::COLOR_YUV2BGR_UYVY); });
    // Other rounding, and no way that leads to three bytes at once.
    job.peer("libyuv", [frame] {
        const int width = frame->source.cols, height = frame->source.rows;
        libyuv::UYVYToARGB(frame->source.data, 2 * width, frame->between.data, 4 * width, width, height);
        libyuv::ARGBToRGB24(frame->between.data, 4 * width, frame->peer.data, 3 * width, width, height);
    });
    if (size.width == 640)
        job.atLeast(9, "plain").atMost(0.7, "cvtColor").atMost(1.6, "libyuv");
    return job;
}

Job uyvy(cv::Size size)
{
    return packed(size, ColorConvert::convertUYVYToBGR, uyvyToBgr.plain);
}

Job uy1vy0(cv::Size size)
{
    return packed(size, ColorConvert::convertUY1VY0ToRGB, uy1vy0ToRgb.plain);
}

Job ycbcr(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 3);
    Job job = image(frame, ColorConvert::convertYCbCrtoBRG, ycbcrToBgr.plain);
    job.peer("cvtColor", [frame] { cv::cvtColor(frame->source, frame->peer, cv::COLOR_YCrCb2BGR); });
    if (size.width == 640)
        job.atLeast(6, "plain").atMost(1.5, "cvtColor");
    return job;
}

Job encode(cv::Size size, void (*ours)(void*, void*, unsigned long), ConvertPixels* plain, int code)
{
    const auto frame = std::make_shared<Frame>(size, 3);
    const auto convert = [frame, ours] { ours(frame->source.data, frame->ours.data, frame->pixels); };
    const auto define = [frame, plain] { plain(frame->source.data, frame->plain.data, frame->pixels); };
    convert();
    define();
    Job job(6 * frame->pixels, frame->pixels);
    job.check(same(frame->ours, frame->plain)).ours(convert).plain(define);
    job.peer("cvtColor", [frame, code] { cv::cvtColor(frame->source, frame->peer, code); });
    if (size.width == 640)
        job.atLeast(2.4, "plain").atMost(1.25, "cvtColor");
    return job;
}

Job bgrJobOf(cv::Size size)
{
    return encode(size, ColorConvert::convertBGR888ToYCbCr, bgrToYcbcr.plain, cv::COLOR_BGR2YCrCb);
}

Job rgbJobOf(cv::Size size)
{
    return encode(size, ColorConvert::convertRGBToYCbCr, rgbToYcbcr.plain, cv::COLOR_RGB2YCrCb);
}

Job yuv2(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 3, 2);
    const auto convert = [frame] {
        ColorConvert::convertYCbCrtoYUV2(frame->source.data, frame->ours.data, frame->pixels);
    };
    const auto define = [frame] { ycbcrToYuv2.plain(frame->source.data, frame->plain.data, frame->pixels); };
    convert();
    define();
    Job job(5 * frame->pixels, frame->pixels);
    job.check(same(frame->ours, frame->plain)).ours(convert).plain(define);
    if (size.width == 640)
        job.atLeast(5, "plain").atMost(1.4, "memcpy");
    return job;
}

Job swap(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 3);
    frame->source.copyTo(frame->ours);
    const auto convert = [frame] { ColorConvert::swapRB(frame->ours); };
    const auto define = [frame] { swapRb.plain(frame->plain.data, frame->plain.data, frame->pixels); };
    frame->source.copyTo(frame->plain);
    convert();
    define();
    Job job(6 * frame->pixels, frame->pixels);
    job.check(same(frame->ours, frame->plain)).ours(convert).plain(define);
    job.peer("cvtColor", [frame] { cv::cvtColor(frame->peer, frame->peer, cv::COLOR_RGB2BGR); });
    if (size.width == 640)
        job.atLeast(4.5, "plain").atMost(0.5, "cvtColor");
    return job;
}

Job yuyv(cv::Size size)
{
    const auto frame = std::make_shared<Frame>(size, 2);
    const auto lumaChroma = std::make_shared<cv::Mat>(size, CV_8UC3);
    const auto convert = [frame] {
        Image out(frame->ours);
        ColorConvert::convertYUYVToBGR(frame->source, out);
    };
    const auto stage = [lumaChroma](cv::Mat& out) { cv::cvtColor(*lumaChroma, out, cv::COLOR_YCrCb2BGR); };
    const auto define = [frame, lumaChroma, stage] {
        lagYuyv.plain(frame->source.data, lumaChroma->data, 0, frame->pixels);
        stage(frame->plain);
    };
    convert();
    define();
    Job job(5 * frame->pixels, frame->pixels);
    job.check(same(frame->ours, frame->plain)).ours(convert).plain(define);
    job.peer("cvtColor stage", [frame, stage] { stage(frame->peer); });
    if (size.width == 640)
        job.atLeast(1.5, "plain").atMost(1.3, "cvtColor stage");
    return job;
}

const Registration uyvyJob("UYVY to BGR", uyvy);
const Registration uy1vy0Job("UY1VY0 to RGB", uy1vy0);
const Registration ycbcrJob("YCbCr to BGR", ycbcr);
const Registration bgrJob("BGR to YCbCr", bgrJobOf);
const Registration rgbJob("RGB to YCbCr", rgbJobOf);
const Registration yuv2Job("YCbCr to YUV2", yuv2);
const Registration swapJob("swapRB", swap);
const Registration yuyvJob("YUYV to BGR", yuyv);

} // namespace

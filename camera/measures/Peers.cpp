#include "camera/measures/Peers.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>

namespace velmo::camera {
namespace {

using Values = cv::Mat_<float>;

Values valuesOf(const Frame& frame)
{
    Values values;
    frame.convertTo(values, CV_32F);
    return values;
}

FilterMaker withoutMemory(Filter filter)
{
    return [filter = std::move(filter)] { return filter; };
}

FilterMaker bilateral(int diameter, double height, double width)
{
    return withoutMemory([=](Frame& frame) {
        Values smooth;
        cv::bilateralFilter(valuesOf(frame), smooth, diameter, height, width);
        smooth.convertTo(frame, CV_16U);
    });
}

FilterMaker runningMean(double share)
{
    return [share] {
        return [share, mean = std::make_shared<Values>()](Frame& frame) {
            const Values values = valuesOf(frame);
            if (mean->size() != values.size())
                *mean = values.clone();
            cv::addWeighted(values, share, *mean, 1 - share, 0, *mean);
            mean->convertTo(frame, CV_16U);
        };
    };
}

/// As `cv::fastNlMeansDenoising` does with 16 bits: each pixel becomes the mean of those around it, weighted
/// by exp(-d^2 / h^2), where d is the mean absolute difference of the patches around the two. Written out,
/// because the module that has it is no part of what this library needs.
FilterMaker nonLocalMeans(double h)
{
    return withoutMemory([h](Frame& frame) {
        constexpr int s32Patch = 7, s32Search = 21, s32Reach = s32Search / 2,
                      s32Border = s32Reach + s32Patch / 2;
        Values around;
        cv::copyMakeBorder(valuesOf(frame), around, s32Border, s32Border, s32Border, s32Border,
                           cv::BORDER_REFLECT_101);
        const cv::Size patches(frame.cols + s32Patch - 1, frame.rows + s32Patch - 1);
        const cv::Rect inner({s32Patch / 2, s32Patch / 2}, frame.size());
        const Values here = around(cv::Rect({s32Reach, s32Reach}, patches));
        Values sum(frame.size(), 0.0F), weights(frame.size(), 0.0F), difference, weight;
        for (int y = 0; y < s32Search; ++y)
            for (int x = 0; x < s32Search; ++x) {
                const Values there = around(cv::Rect({x, y}, patches));
                cv::absdiff(here, there, difference);
                cv::blur(difference, difference, {s32Patch, s32Patch});
                cv::multiply(difference(inner), difference(inner), weight, -1 / (h * h));
                cv::exp(weight, weight);
                weights += weight;
                sum += weight.mul(there(inner));
            }
        cv::Mat(sum / weights).convertTo(frame, CV_16U);
    });
}

} // namespace

std::vector<Peer> peers(double noise)
{
    const double sigma = std::max(0.3, noise); // whole numbers have that much
    return {{"medianBlur", false, {withoutMemory([](Frame& frame) { cv::medianBlur(frame, frame, 3); })}},
            {"bilateralFilter",
             false,
             {bilateral(5, 3 * sigma, 1.5), bilateral(5, 2 * sigma, 1.5), bilateral(5, 5 * sigma, 1.5),
              bilateral(9, 3 * sigma, 3), bilateral(9, 5 * sigma, 3)}},
            {"addWeighted", true, {runningMean(0.25), runningMean(0.1), runningMean(0.5)}},
            {"non-local means",
             false,
             {nonLocalMeans(sigma), nonLocalMeans(0.6 * sigma), nonLocalMeans(1.5 * sigma)}}};
}

} // namespace velmo::camera

#include "vision/imgproc/DownSize.h"

#include "core/Exception.h"
#include "core/memory/Overlap.h"
#include "vision/kernels/DownSizeKernel.h"

#include <string>

namespace velmo::exp::vision {
namespace {

void checkSize(const cv::Mat& in)
{
    if (in.cols != 240 || in.rows != 180)
        VELMO_THROW("Can only downsize frames of 240 x 180, not " + std::to_string(in.cols) + " x " +
                    std::to_string(in.rows) + "!");
}

} // namespace

void DownSize::resize240To160(cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    checkSize(in);
    const cv::Mat_<short> frame = in; // keeps the pixels if `out` is `in`
    out.create(120, 160);
    resizeToTwoThirds(untouched(frame, out), out);
}

void DownSize::resize240To120(cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    checkSize(in);
    const cv::Mat_<short> frame = in;
    out.create(90, 120);
    resizeToHalf(untouched(frame, out), out);
}

} // namespace velmo::exp::vision

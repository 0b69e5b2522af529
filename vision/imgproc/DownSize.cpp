#include "vision/imgproc/DownSize.h"

#include "core/Exception.h"
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
    const cv::Mat_<short> source = in; // keeps the pixels if `out` is `in`
    out.create(120, 160);
    resizeToTwoThirds(source, out);
}

void DownSize::resize240To120(cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    checkSize(in);
    const cv::Mat_<short> source = in;
    out.create(90, 120);
    resizeToHalf(source, out);
}

} // namespace velmo::exp::vision

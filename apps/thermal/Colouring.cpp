#include "apps/thermal/Colouring.h"

#include <opencv2/imgproc.hpp>

namespace thermal {

Picture Colouring::paint(const Frame& frame, ValueRange range)
{
    const double scale = 255.0 / std::max(1, range.high - range.low);
    cv::Mat grey;
    frame.convertTo(grey, CV_8U, scale, -range.low * scale);
    cv::Mat picture;
    cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    return picture;
}

} // namespace thermal

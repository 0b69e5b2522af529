#include "camera/drawing/MarkColour.h"

#include <opencv2/imgproc.hpp>

namespace velmo::camera {

cv::Vec3b markColour(unsigned number)
{
    constexpr unsigned hues = 180;
    constexpr unsigned golden = 111; // of them: never close to one of the last few
    constexpr unsigned green = 129;  // from there number 1 is green
    const auto hue = static_cast<unsigned char>((number % hues * golden + green) % hues);
    cv::Mat_<cv::Vec3b> colour(1, 1, cv::Vec3b(hue, 160, 255));
    cv::cvtColor(colour, colour, cv::COLOR_HSV2BGR);
    return colour(0, 0);
}

} // namespace velmo::camera

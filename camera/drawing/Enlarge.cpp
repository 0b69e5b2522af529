#include "camera/drawing/Enlarge.h"

#include <opencv2/imgproc.hpp>

namespace velmo::camera {

Picture enlarged(const Picture& picture, int scale)
{
    if (scale == 1)
        return picture;
    Picture large;
    cv::resize(picture, large, {}, scale, scale, cv::INTER_NEAREST);
    return large;
}

} // namespace velmo::camera

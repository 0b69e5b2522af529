#include "camera/drawing/Enlarge.h"

#include <algorithm>

namespace velmo::camera {

Picture enlarged(const Picture& picture, int scale)
{
    Picture large;
    enlarge(picture, scale, large);
    return large;
}

void enlarge(const Picture& picture, int scale, Picture& large)
{
    large.create(picture.rows * scale, picture.cols * scale);
    for (int r = 0; r < picture.rows; ++r) {
        cv::Vec3b* const line = large[r * scale];
        for (int c = 0; c < picture.cols; ++c)
            std::fill_n(line + c * scale, scale, picture(r, c));
        for (int copy = 1; copy < scale; ++copy)
            std::copy_n(line, large.cols, large[r * scale + copy]);
    }
}

} // namespace velmo::camera

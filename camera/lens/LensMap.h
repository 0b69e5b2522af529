#pragma once

#include "camera/Frame.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/DistortionCorrection.h"

#include <opencv2/core.hpp>

#include <string>

namespace velmo::camera {

/// How a lens bends: a point at distance r from the axis (in focal lengths) is seen at r (1 + k1 r^2 + k2
/// r^4).
struct VELMO_API LensModel
{
    double k1, k2;
    double fx, fy; ///< focal lengths in pixels
    double cx, cy; ///< where the axis meets the picture, in pixels

    /// `K1,K2,FX,FY,CX,CY`.
    /// @throws Exception  that names what is wrong
    static LensModel parse(const std::string& text, const std::string& what);

    /// Where the camera shows what a straight lens would show at `corrected`.
    cv::Point2d source(cv::Point2d corrected) const;
};

/// The map that undoes the lens, in the six channels of a map file. Sources outside the frame are moved to
/// its edge. Weights are those of bilinear interpolation, and add up to 32768.
/// @throws Exception  if a pixel's source is further away than a record of the map can say
VELMO_API cv::Mat makeLensMap(const LensModel& lens, cv::Size size);

/// Applies a map: a pixel becomes the mean of its source pixel and the right, lower and lower right
/// neighbours of that, by the record's four weights in this order over their sum, halves up. Beyond the
/// right and lower edge the last pixel repeats; a pixel without weights is its source pixel.
/// @throws Exception  if the map is not one of the frame's size
VELMO_API Frame undistorted(const Frame& frame, const vision::DistortionCorrection& map);

} // namespace velmo::camera

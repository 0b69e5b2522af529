#pragma once

#include "camera/Frame.h"
#include "camera/Settings.h"
#include "camera/temperature/Thermometer.h"

#include "core/Export.h"
#include "vision/imgproc/ConnectedComponent.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace velmo::camera {

/// Which pixels belong to blobs: those on one side of a value, which itself is on neither.
struct BlobRule
{
    double value;          ///< raw; fractions count
    bool above;            ///< otherwise below
    std::size_t minPixels; ///< smaller blobs are left out

    /// blobs/above or blobs/below, blobs/min-size; nothing if blobs are not looked for.
    /// @throws Exception  for both of the first two, and for a value that no pixel can have
    static VELMO_API std::optional<BlobRule> from(const Settings& settings, const Thermometer& thermometer);
};

/// One connected region of a frame and what is measured of it.
struct Blob
{
    exp::vision::ConnectedComponent component;
    cv::Point2d centre;
    cv::Rect box;
    double elongation = 0; ///< NaN for a single pixel
    /// Length and width along the principal axes, in pixels: the axes of an even ellipse that spreads as
    /// far. NaN for a single pixel.
    double length = 0;
    double width = 0;
    /// Of the longer axis, in degrees above the horizontal: more than -90, up to 90. NaN without one.
    double angle = 0;
    unsigned short low = 0; ///< values in it
    unsigned short high = 0;
    double mean = 0; ///< of what is read of those that have a temperature; fBelow without any
};

/// The blobs of a frame, in the order in which they begin from the top; pixels that touch at a corner belong
/// together. Their components are labelled 1, 2 and so on.
VELMO_API std::vector<Blob> findBlobs(const Frame& frame, const BlobRule& rule,
                                      const Thermometer& thermometer = Thermometer());

} // namespace velmo::camera

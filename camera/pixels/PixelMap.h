#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::camera {

/// 0 is a good pixel, other values are flags of the detectors.
using PixelMap = cv::Mat_<int>;

/// A reason for which a pixel is in a map.
struct PixelReason
{
    const char* name;  ///< for tables
    unsigned int flag; ///< the detector's
    cv::Scalar colour; ///< in pictures
};

/// Those of the library's detectors.
VELMO_API const std::vector<PixelReason>& pixelReasons();

/// "spread+monotony"; the value itself where no reason has such a flag.
VELMO_API std::string reasonsOf(int flags, const std::vector<PixelReason>& reasons = pixelReasons());

/// A line of comma-separated values for each bad pixel under a line of headings: x, y, flags, reasons.
VELMO_API std::string pixelList(const PixelMap& map);

/// Reads such a list back, also one of x,y alone, and with other things behind the flags; headings may be
/// missing. What has no flags is marked as by the histogram.
/// @throws Exception  that names the line
VELMO_API PixelMap parsePixelList(const std::string& text, cv::Size size);

} // namespace velmo::camera

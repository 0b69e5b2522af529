#pragma once

#include "vision/imgproc/BadPixel.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace thermal {

using PixelMap = cv::Mat_<int>; ///< 0 is a good pixel, other values are flags of the detectors

/// A reason for which a pixel is in a map.
struct PixelReason
{
    const char* name;  ///< for tables
    unsigned int flag; ///< the detector's
    cv::Scalar colour; ///< in pictures
};

const std::vector<PixelReason>& pixelReasons();

/// "spread+monotony"; the value itself where no detector has such a flag.
std::string reasonsOf(int flags);

/// A map as a grey PGM of 16 bits; also reads other images of the Netpbm family with one channel.
/// @throws UsageError  that names the path
PixelMap readPixelMap(const std::string& path);
void writePixelMap(const std::string& path, const PixelMap& map);

/// Records as a map image.
/// @throws UsageError  that names the path
std::vector<velmo::exp::vision::BadPixel> readRecords(const std::string& path);
void writeRecords(const std::string& path, const std::vector<velmo::exp::vision::BadPixel>& records);

/// A line for each bad pixel: x, y, flags, reasons.
void writePixelList(const std::string& path, const PixelMap& map);

} // namespace thermal

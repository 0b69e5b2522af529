#pragma once

#include "camera/pixels/PixelMap.h"
#include "recordings/Outputs.h"
#include "vision/imgproc/BadPixel.h"

#include <string>
#include <vector>

namespace thermal {

/// A map of bad pixels from a .pgm of flags, a mask of any image format that frames are read from, a .npy
/// array, or a .csv list of x,y. What holds other values than the detectors' flags is a mask: what is not 0
/// there is bad.
/// @param size  of the frames, for lists, which do not tell it; empty: none is known
/// @throws Exception  that names the file
velmo::camera::PixelMap readAnyMap(const std::string& path, cv::Size size = {});

/// Writes a map by the ending of its name: .pgm flags, .csv a list, .png a mask, white where bad, .npy flags.
/// @throws UsageError  for other endings
void writeAnyMap(velmo::recordings::Outputs& outputs, const std::string& path,
                 const velmo::camera::PixelMap& map);

/// Records from a file of records, or made for the pixels of a map.
/// @throws Exception  that names the file
std::vector<velmo::exp::vision::BadPixel> readReplacements(const std::string& path);

} // namespace thermal

#pragma once

#include "camera/pixels/PixelMap.h"
#include "recordings/Outputs.h"

#include "vision/imgproc/BadPixel.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::recordings {

/// A map of bad pixels as a grey PGM of 16 bits; also reads other images of the Netpbm family with one
/// channel.
/// @throws Exception  that names the path
cv::Mat_<int> readPixelMap(const std::string& path);
void writePixelMap(OutputFile file, const cv::Mat_<int>& map);

/// Records as a map image.
/// @throws Exception  that names the path
std::vector<exp::vision::BadPixel> readRecords(const std::string& path);
void writeRecords(OutputFile file, const std::vector<exp::vision::BadPixel>& records);

/// A map of bad pixels from a .pgm of flags, a mask of any image format that frames are read from, a .npy
/// array, or a .csv list of x,y. What holds other values than the detectors' flags is a mask: what is not 0
/// there is bad.
/// @param size  of the frames, for lists, which do not tell it; empty: none is known
/// @throws Exception  that names the file
camera::PixelMap readAnyMap(const std::string& path, cv::Size size = {});

/// Writes a map by the ending of its name: .pgm flags, .csv a list, .png a mask, white where bad, .npy flags.
/// @throws Exception  for other endings
void writeAnyMap(Outputs& outputs, const std::string& path, const camera::PixelMap& map);

/// Records from a file of records, or made for the pixels of a map.
/// @throws Exception  that names the file
std::vector<exp::vision::BadPixel> readReplacements(const std::string& path);

} // namespace velmo::recordings

#pragma once

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"
#include "recordings/OutputFile.h"

namespace velmo::recordings {

/// The grey values of a PNG of up to 16 bits, unscaled.
/// @param name  what messages call the file
std::unique_ptr<ImageFile> openPng(ByteFile file, const std::string& name);

/// The colours of any PNG, blue, green, red of 8 bits: deeper ones lose their lower bits, grey ones become
/// coloured, what they say of transparency is left out.
cv::Mat_<cv::Vec3b> readPngColours(ByteFile file, const std::string& name);

/// A PNG of one image: counts, CV_16UC1, or colours, blue, green, red, CV_8UC3. Packed for speed: its size is
/// a few percent above the smallest, the time a fifth.
/// @param unit  what a count means; empty for nothing
void writePng(OutputFile file, const cv::Mat& image, const std::string& unit = "");

} // namespace velmo::recordings

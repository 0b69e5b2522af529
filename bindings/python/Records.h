#pragma once

#include "vision/imgproc/BadPixel.h"
#include "vision/imgproc/DistortionCorrection.h"

#include <pybind11/pybind11.h>

#include <vector>

namespace velmo::python {

// Records as structured arrays of one dimension, of the types in velmo/_arrays.py.

pybind11::object recordArray(const std::vector<exp::vision::BadPixel>& records);
pybind11::object recordArray(const std::vector<vision::PixelCorrInfo>& records);

/// @throws TypeError, ValueError  that name the argument, for anything but an array of BAD_PIXEL
std::vector<exp::vision::BadPixel> badPixels(pybind11::handle array, const char* name);
std::vector<vision::PixelCorrInfo> pixelCorrInfo(pybind11::handle array, const char* name);

/// Records of an array of them, or of the bad pixels of a map: rows x cols int32.
std::vector<exp::vision::BadPixel> recordsOrMap(pybind11::handle array, const char* name);

/// A flat field as an array of 3 x rows x cols float32.
pybind11::object planesArray(const std::vector<cv::Mat_<float>>& planes);

/// The same back, over the memory of the array.
/// @throws TypeError, ValueError  that name the argument, for anything else
std::vector<cv::Mat_<float>> planesOf(pybind11::handle array, const char* name);

} // namespace velmo::python

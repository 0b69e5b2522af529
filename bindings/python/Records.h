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

} // namespace velmo::python

#pragma once

#include <pybind11/pybind11.h>

namespace velmo::python {

// Each adds the classes and functions of one family to the module.
void addErrors(pybind11::module_& module);
void addFilters(pybind11::module_& module);
void addColours(pybind11::module_& module);
void addPixels(pybind11::module_& module);
void addStorage(pybind11::module_& module);
void addTemperature(pybind11::module_& module);
void addCamera(pybind11::module_& module);
void addPixelSearch(pybind11::module_& module);
void addMeasures(pybind11::module_& module);
void addRecordings(pybind11::module_& module);

} // namespace velmo::python

#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace velmo::python {

/// A path from str, bytes or os.PathLike.
std::string pathText(pybind11::handle path);

} // namespace velmo::python

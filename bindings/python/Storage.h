#pragma once

#include "core/datatypes/DataStorage.h"

#include <pybind11/pybind11.h>

namespace velmo::python {

/// A tree as nested dicts: groups are dicts, values bool, int, float, str, or bytes for uint8[].
pybind11::dict dictOf(const exp::DataStorage<std::string>& tree);

} // namespace velmo::python

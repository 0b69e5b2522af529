#pragma once

#include "core/datatypes/DataStorage.h"

#include <pybind11/pybind11.h>

namespace velmo::python {

/// A tree as nested dicts: groups are dicts, values bool, int, float, str, or bytes for uint8[].
pybind11::dict dictOf(const exp::DataStorage<std::string>& tree);

/// The same back: int becomes int64, or uint64 where it needs it.
/// @throws TypeError  that names the entry, for values of other types
exp::DataStorage<std::string> treeOf(const pybind11::dict& dict);

} // namespace velmo::python

#include "bindings/python/Records.h"

#include "bindings/python/Arrays.h"

#include <pybind11/numpy.h>

#include <cstring>
#include <string>

namespace py = pybind11;

namespace velmo::python {
namespace {

using exp::vision::BadPixel;
using vision::PixelCorrInfo;

static_assert(sizeof(PixelCorrInfo) == 10, "records are copied as bytes");

py::dtype dtypeOf(const BadPixel*)
{
    static const py::handle dtype = fromPackage("BAD_PIXEL");
    return py::reinterpret_borrow<py::dtype>(dtype);
}

py::dtype dtypeOf(const PixelCorrInfo*)
{
    static const py::handle dtype = fromPackage("PIXEL_CORR_INFO");
    return py::reinterpret_borrow<py::dtype>(dtype);
}

template <class Record>
py::object arrayOf(const std::vector<Record>& records)
{
    return py::array(dtypeOf(static_cast<const Record*>(nullptr)), {records.size()}, {}, records.data());
}

template <class Record>
std::vector<Record> vectorOf(py::handle array, const char* name, const char* dtypeName)
{
    const py::dtype dtype = dtypeOf(static_cast<const Record*>(nullptr));
    if (!py::isinstance<py::array>(array) || !py::object(array.attr("dtype")).equal(dtype))
        throw py::type_error(std::string(name) + ": not a numpy array of velmo." + dtypeName);
    const auto given = py::reinterpret_borrow<py::array>(array);
    if (given.ndim() != 1)
        throw py::value_error(std::string(name) + ": " + std::to_string(given.ndim()) +
                              " dimensions, where one is needed");
    std::vector<Record> records(static_cast<std::size_t>(given.shape(0)));
    const auto* next = static_cast<const char*>(given.data());
    for (Record& record : records) {
        std::memcpy(static_cast<void*>(&record), next, sizeof record);
        next += given.strides(0);
    }
    return records;
}

} // namespace

py::object recordArray(const std::vector<BadPixel>& records)
{
    return arrayOf(records);
}

py::object recordArray(const std::vector<PixelCorrInfo>& records)
{
    return arrayOf(records);
}

std::vector<BadPixel> badPixels(py::handle array, const char* name)
{
    return vectorOf<BadPixel>(array, name, "BAD_PIXEL");
}

std::vector<PixelCorrInfo> pixelCorrInfo(py::handle array, const char* name)
{
    return vectorOf<PixelCorrInfo>(array, name, "PIXEL_CORR_INFO");
}

} // namespace velmo::python

#include "bindings/python/Records.h"

#include "bindings/python/Arrays.h"

#include "camera/pixels/Replacements.h"

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

std::vector<BadPixel> recordsOrMap(py::handle array, const char* name)
{
    if (!py::isinstance<py::array>(array) || py::array(py::reinterpret_borrow<py::array>(array)).ndim() != 2)
        return badPixels(array, name);
    const cv::Mat_<int> map = view(array, name, CV_32SC1);
    return cv::countNonZero(map) == 0 ? std::vector<BadPixel>() : camera::replacementsOf(map).records;
}

py::object planesArray(const std::vector<cv::Mat_<float>>& planes)
{
    const cv::Size size = planes.front().size();
    py::array_t<float> array({static_cast<int>(planes.size()), size.height, size.width});
    for (std::size_t n = 0; n < planes.size(); ++n)
        planes[n].copyTo(cv::Mat(size, CV_32FC1, array.mutable_data(n)));
    return std::move(array);
}

std::vector<cv::Mat_<float>> planesOf(py::handle array, const char* name)
{
    if (!py::isinstance<py::array>(array))
        throw py::type_error(std::string(name) + ": a " + Py_TYPE(array.ptr())->tp_name +
                             ", where a numpy array of float32 is needed");
    if (py::reinterpret_borrow<py::array>(array).ndim() != 3)
        throw py::value_error(std::string(name) + ": not 3 x rows x cols");
    std::vector<cv::Mat_<float>> planes;
    for (const auto& plane : array)
        planes.emplace_back(view(plane, name, CV_32FC1));
    return planes;
}

} // namespace velmo::python

#include "bindings/python/Arrays.h"

#include <pybind11/numpy.h>

#include <climits>
#include <string>

namespace velmo::python {
namespace {

using Proxy = py::detail::PyArray_Proxy;
using Api = py::detail::npy_api;

const Proxy& proxy(py::handle array)
{
    return *py::detail::array_proxy(array.ptr());
}

struct Depth
{
    int depth;
    int typeNumber;
    const char* name;
};

const Depth depths[] = {{CV_8U, Api::NPY_UBYTE_, "uint8"},    {CV_16U, Api::NPY_USHORT_, "uint16"},
                        {CV_16S, Api::NPY_SHORT_, "int16"},   {CV_32S, Api::NPY_INT_, "int32"},
                        {CV_32F, Api::NPY_FLOAT_, "float32"}, {CV_64F, Api::NPY_DOUBLE_, "float64"}};

const Depth& depthOf(int type)
{
    for (const Depth& depth : depths)
        if (depth.depth == CV_MAT_DEPTH(type))
            return depth;
    throw py::type_error("no array has this type");
}

bool isNative(const Proxy& array)
{
    const char order = py::detail::array_descriptor_proxy(array.descr)->byteorder;
    return order == '=' || order == '|';
}

bool hasType(const Proxy& array, int type)
{
    return py::detail::array_descriptor_proxy(array.descr)->type_num == depthOf(type).typeNumber &&
           isNative(array);
}

std::string alternatives(std::initializer_list<int> types)
{
    std::string names;
    for (const int type : types)
        names += (names.empty() ? "" : " or ") + std::string(typeName(type));
    return names;
}

std::string shapeOf(const Proxy& array)
{
    std::string shape;
    for (int d = 0; d < array.nd; ++d)
        shape += (d == 0 ? "" : " x ") + std::to_string(array.dimensions[d]);
    return array.nd == 0 ? "without dimensions" : shape;
}

std::string wantedShape(int type)
{
    return CV_MAT_CN(type) == 1 ? "rows x cols" : "rows x cols x " + std::to_string(CV_MAT_CN(type));
}

[[noreturn]] void refuseValue(const char* name, const std::string& message)
{
    throw py::value_error(std::string(name) + ": " + message);
}

int matchType(py::handle array, const char* name, std::initializer_list<int> types)
{
    if (!Api::get().PyArray_Check_(array.ptr()))
        throw py::type_error(std::string(name) + ": a " + Py_TYPE(array.ptr())->tp_name +
                             ", where a numpy array of " + alternatives(types) + " is needed");
    for (const int type : types)
        if (hasType(proxy(array), type))
            return type;
    throw py::type_error(std::string(name) + ": an array of " + std::string(py::str(array.attr("dtype"))) +
                         ", where " + alternatives(types) + " is needed; nothing is converted silently");
}

/// The step of the rows, all else being in order.
std::size_t checkedStep(const Proxy& array, const char* name, int type)
{
    const int channels = CV_MAT_CN(type);
    const auto element = static_cast<py::ssize_t>(CV_ELEM_SIZE(type)), depth = element / channels;
    if (array.nd != (channels == 1 ? 2 : 3) || (channels > 1 && array.dimensions[2] != channels))
        refuseValue(name, "shape " + shapeOf(array) + ", where " + wantedShape(type) + " is needed");
    const py::ssize_t rows = array.dimensions[0], cols = array.dimensions[1];
    if (rows > INT_MAX || cols > INT_MAX / element)
        refuseValue(name, "shape " + shapeOf(array) + " is too large");
    if (rows == 0 || cols == 0)
        return static_cast<std::size_t>(cols * element);
    if ((channels > 1 && array.strides[2] != depth) || (cols > 1 && array.strides[1] != element) ||
        (rows > 1 && array.strides[0] < cols * element))
        refuseValue(name, "the values of a row must lie side by side and rows one behind the other; "
                          "numpy.ascontiguousarray makes such a copy");
    if ((array.flags & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0)
        refuseValue(name, "values do not lie at even addresses; a copy has them there");
    return static_cast<std::size_t>(rows > 1 ? array.strides[0] : cols * element);
}

cv::Mat over(py::handle array, const char* name, int type)
{
    const Proxy& given = proxy(array);
    const std::size_t step = checkedStep(given, name, type);
    const int rows = static_cast<int>(given.dimensions[0]), cols = static_cast<int>(given.dimensions[1]);
    return rows == 0 || cols == 0 ? cv::Mat(rows, cols, type) : cv::Mat(rows, cols, type, given.data, step);
}

py::object newArray(cv::Size size, int type, py::handle subtype)
{
    const Api& api = Api::get();
    const int channels = CV_MAT_CN(type);
    const Py_intptr_t shape[] = {size.height, size.width, channels};
    PyObject* const descriptor = api.PyArray_DescrFromType_(depthOf(type).typeNumber);
    auto* const made = reinterpret_cast<PyTypeObject*>(
        subtype ? subtype.ptr() : reinterpret_cast<PyObject*>(api.PyArray_Type_));
    PyObject* const array = api.PyArray_NewFromDescr_(made, descriptor, channels == 1 ? 2 : 3, shape, nullptr,
                                                      nullptr, 0, nullptr);
    if (array == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(array);
}

/// Rows of so many values of one type.
cv::Mat table(py::handle array, const char* name, int type, int columns)
{
    const cv::Mat rows = view(array, name, type);
    if (rows.cols != columns)
        refuseValue(name, "shape " + shapeOf(proxy(array)) + ", where N x " + std::to_string(columns) +
                              " is needed");
    return rows;
}

} // namespace

py::handle fromPackage(const char* name)
{
    return py::object(py::module_::import("velmo._arrays").attr(name)).release();
}

const char* typeName(int depth)
{
    return depthOf(depth).name;
}

cv::Mat view(py::handle array, const char* name, std::initializer_list<int> types)
{
    return over(array, name, matchType(array, name, types));
}

cv::Mat writableView(py::handle array, const char* name, int type)
{
    const cv::Mat image = view(array, name, type);
    if ((proxy(array).flags & Api::NPY_ARRAY_WRITEABLE_) == 0)
        refuseValue(name, "the array is read-only");
    return image;
}

Output::Output(py::handle out, cv::Size size, int type, py::handle subtype)
{
    if (out.is_none()) {
        m_oArray = newArray(size, type, subtype);
        m_oImage = over(m_oArray, "out", type);
    } else {
        m_oArray = py::reinterpret_borrow<py::object>(out);
        m_oImage = writableView(out, "out", type);
        if (m_oImage.size() != size)
            refuseValue("out", "shape " + shapeOf(proxy(out)) + ", where " + std::to_string(size.height) +
                                   " x " + std::to_string(size.width) +
                                   (CV_MAT_CN(type) == 1 ? "" : " x " + std::to_string(CV_MAT_CN(type))) +
                                   " is needed");
    }
    m_pData = m_oImage.data;
}

py::object Output::array() const
{
    if (!m_oImage.empty() && m_oImage.data != m_pData)
        throw std::logic_error("the result lies beside its array");
    return m_oArray;
}

py::object copied(const cv::Mat& image, py::handle subtype)
{
    Output output(py::none(), image.size(), image.type(), subtype);
    if (!image.empty())
        image.copyTo(output.image());
    return output.array();
}

py::handle pictureClass()
{
    static const py::handle found = fromPackage("Picture");
    return found;
}

py::handle paletteClass()
{
    static const py::handle found = fromPackage("Palette");
    return found;
}

std::vector<unsigned char> colourPoints(py::handle array, const char* name)
{
    const cv::Mat rows = table(array, name, CV_8UC1, 3);
    if (rows.empty())
        refuseValue(name, "a palette has one colour at least");
    std::vector<unsigned char> points;
    for (int r = 0; r < rows.rows; ++r)
        points.insert(points.end(), rows.ptr(r), rows.ptr(r) + rows.cols);
    return points;
}

py::object paletteArray(const std::vector<unsigned char>& points)
{
    const int colours = static_cast<int>(points.size() / 3);
    return copied(cv::Mat(colours, 3, CV_8UC1, const_cast<unsigned char*>(points.data())), paletteClass());
}

std::vector<cv::Point> points(py::handle array, const char* name)
{
    const cv::Mat rows = table(array, name, CV_32SC1, 2);
    std::vector<cv::Point> points;
    for (int r = 0; r < rows.rows; ++r)
        points.emplace_back(rows.at<int>(r, 0), rows.at<int>(r, 1));
    return points;
}

py::object pointArray(const std::vector<cv::Point>& points)
{
    Output output(py::none(), {2, static_cast<int>(points.size())}, CV_32SC1);
    for (std::size_t n = 0; n < points.size(); ++n)
        output.image().at<cv::Point>(static_cast<int>(n)) = points[n];
    return output.array();
}

int inRange(py::handle number, const char* name, long low, long high)
{
    if (!PyIndex_Check(number.ptr()))
        throw py::type_error(std::string(name) + ": a " + Py_TYPE(number.ptr())->tp_name +
                             ", where a whole number is needed");
    int overflow = 0;
    const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(number.ptr()));
    const long value = index ? PyLong_AsLongAndOverflow(index.ptr(), &overflow) : -1;
    if (!index || (value == -1 && PyErr_Occurred() != nullptr))
        throw py::error_already_set();
    if (overflow != 0 || value < low || value > high)
        refuseValue(name, std::string(py::str(number)) + " is not from " + std::to_string(low) + " to " +
                              std::to_string(high));
    return static_cast<int>(value);
}

} // namespace velmo::python

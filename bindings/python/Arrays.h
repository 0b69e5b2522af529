#pragma once

#include <opencv2/core.hpp>
#include <pybind11/pybind11.h>

#include <initializer_list>
#include <mutex>
#include <vector>

namespace velmo::python {

namespace py = pybind11;

// numpy arrays as matrices over the same memory. Nothing is converted: an array of another type is a
// TypeError, one of another shape, without unit column stride or not to be written is a ValueError; both name
// the argument and what it should be.

/// @param name   of the argument
/// @param types  of the matrix, CV_16UC1 or so; any of several. One channel is rows x cols, more are rows x
///               cols x channels.
/// @returns a matrix over the memory of the array, whose rows may be padded
cv::Mat view(py::handle array, const char* name, std::initializer_list<int> types);
inline cv::Mat view(py::handle array, const char* name, int type)
{
    return view(array, name, {type});
}

/// The same of an array that is going to be written.
cv::Mat writableView(py::handle array, const char* name, int type);

/// What numpy calls them: "uint16", "rows x cols x 3".
const char* typeName(int depth);

/// Where a result goes: the array that the caller gave, or a new one.
class Output
{
public:
    /// @param out      None, or an array of exactly this size and type
    /// @param subtype  of numpy.ndarray, for a new array
    Output(py::handle out, cv::Size size, int type, py::handle subtype = {});

    /// Over the memory of the array.
    cv::Mat& image() { return m_oImage; }

    /// The array, if the image still stands for it.
    py::object array() const;

private:
    py::object m_oArray;
    cv::Mat m_oImage;
    const unsigned char* m_pData;
};

/// An array of its own with what is in the matrix.
py::object copied(const cv::Mat& image, py::handle subtype = {});

/// What velmo/_arrays.py defines; lives as long as the process.
py::handle fromPackage(const char* name);

/// The classes of arrays that notebooks show: velmo.Picture and velmo.Palette.
py::handle pictureClass();
py::handle paletteClass();

/// Colour points from an array of N x 3 uint8: red, green, blue.
std::vector<unsigned char> colourPoints(py::handle array, const char* name);
py::object paletteArray(const std::vector<unsigned char>& points);

/// Points from an array of N x 2 int32: x, y.
std::vector<cv::Point> points(py::handle array, const char* name);
py::object pointArray(const std::vector<cv::Point>& points);

/// @throws ValueError  that names argument and limits, outside of them
int inRange(py::handle number, const char* name, long low, long high);

/// Runs something that needs no Python without Python's lock, so that other threads go on; with the mutex of
/// an object that one thread at a time may use.
template <class Work>
void unlocked(Work&& work)
{
    const py::gil_scoped_release released;
    work();
}
template <class Work>
void unlocked(std::mutex& mutex, Work&& work)
{
    const py::gil_scoped_release released;
    const std::lock_guard lock(mutex);
    work();
}

} // namespace velmo::python

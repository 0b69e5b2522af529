#pragma once

#include "bindings/python/Arrays.h"

#include <mutex>
#include <utility>

namespace velmo::python {

/// A frame of counts.
inline cv::Mat countsView(py::handle frame, const char* name = "frame")
{
    return view(frame, name, CV_16UC1);
}

/// Something that frames are added to, by one thread at a time.
template <class Meter>
struct Adding
{
    template <class... Arguments>
    explicit Adding(Arguments&&... arguments) : meter(std::forward<Arguments>(arguments)...)
    {}

    void add(py::handle frame)
    {
        const cv::Mat image = countsView(frame);
        unlocked(mutex, [&] { meter.add(image); });
    }

    template <class Work>
    auto with(Work&& work)
    {
        decltype(work(meter)) result;
        unlocked(mutex, [&] { result = work(meter); });
        return result;
    }

    std::mutex mutex;
    Meter meter;
};

} // namespace velmo::python

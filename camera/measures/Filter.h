#pragma once

#include "camera/Frame.h"

#include <functional>
#include <vector>

namespace velmo::camera {

/// Works on the next frame of a stream in place.
using Filter = std::function<void(Frame&)>;

/// Makes one that has seen no frame yet: what is measured on several streams needs a fresh one for each.
using FilterMaker = std::function<Filter()>;

/// The frames of a stream, filtered; the given ones stay as they are.
inline std::vector<Frame> filtered(const FilterMaker& make, const std::vector<Frame>& frames)
{
    const Filter filter = make();
    std::vector<Frame> results;
    results.reserve(frames.size());
    for (const Frame& frame : frames) {
        Frame result = frame.clone();
        filter(result);
        results.push_back(result.clone()); // a filter may hand out memory that it uses again
    }
    return results;
}

} // namespace velmo::camera

#pragma once

#include "camera/measures/Filter.h"

#include "core/Export.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// A filter that somebody would take instead.
struct Peer
{
    std::string name;
    bool remembers;                    ///< the frames before; otherwise each frame is filtered by itself
    std::vector<FilterMaker> settings; ///< the first one is the usual choice
};

/// `cv::medianBlur` of 3 by 3 pixels, `cv::bilateralFilter`, `cv::addWeighted` over time, and non-local
/// means. All but the first work in floating point and round at the end.
/// @param noise  deviation of a pixel in counts: they have to be told
VELMO_API std::vector<Peer> peers(double noise);

} // namespace velmo::camera

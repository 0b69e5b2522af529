#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <opencv2/core.hpp>

#include <functional>
#include <string>
#include <vector>

namespace velmo::camera {

/// A scene as a perfect camera would see it, in counts, at a time in frames.
struct SimulatedScene
{
    std::string name;
    bool flat; ///< without detail: here, filters can do most
    std::function<cv::Mat_<float>(int time)> at;
};

/// Flat ones whose level drifts and jumps, boxes, coarse and fine texture, objects that move, cameras that
/// pan over fine and coarse scenes, and one that shakes.
/// @param seed  of their random parts
VELMO_API std::vector<SimulatedScene> simulatedScenes(cv::Size size, unsigned seed = 5);

/// A picture taken for the truth: still, and, halved in size, passing by where it is large enough for that.
/// Noise that it has itself counts as detail of the scene.
/// @param size  of the scenes, no larger than the picture
VELMO_API std::vector<SimulatedScene> scenesOf(const cv::Mat_<float>& picture, cv::Size size);

} // namespace velmo::camera

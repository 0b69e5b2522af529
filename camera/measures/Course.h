#pragma once

#include "camera/Picture.h"
#include "camera/measures/ShapeMeter.h"
#include "core/Export.h"

#include <optional>
#include <vector>

namespace velmo::camera {

/// How the means of shapes go over time, to be drawn at the end.
class VELMO_API Course
{
public:
    /// Adds what the meter measured last.
    void add(const ShapeMeter& meter);

    /// One plot of the means over time; below it one of the deltas, if there are any.
    ///
    /// @param meter  whose shapes they are
    /// @param fps    frames per second, if they are known: the axis counts seconds then, otherwise frames
    Picture draw(const ShapeMeter& meter, std::optional<double> fps) const;

private:
    std::vector<std::vector<double>> m_vecMeans; ///< one row per shape
    std::vector<std::vector<double>> m_vecDeltas;
};

} // namespace velmo::camera

// Not installed.
#pragma once

#include "camera/stages/DenoiseLines.h"

#include <array>

namespace velmo::camera {

/// Tells stripes from the scene: means of lines (all columns, or all rows) in four segments of their length.
/// What the segments agree on is a stripe.
struct LineMeans
{
    static constexpr int s32Segments = 4;

    std::array<std::vector<int>, s32Segments> sums, inside; ///< of values; of how many within the limit
    std::array<int, s32Segments> pixels{};                  ///< how many were added to a line
    Line means, doubts;                                     ///< of the segments' means; variances of these
    float common = 0;                                       ///< variance of what the segments agree on

    /// Before the sums of a frame.
    void clear(std::size_t lines);

    /// Behind them: what they say of each line.
    /// @param unit   in which the sums count
    /// @param reach  what so many lines before and after have in common is no stripe; 0 for any
    void average(float unit, int reach);

    /// Stripes that change: the means, as much of them as they are likely to be stripes. All lines together
    /// say how large these are.
    /// @param deviation  of a pixel
    /// @param trust      that it is this scene
    void shrink(float deviation, float trust, Line& stripes);

    /// Stripes that stay: moves them towards the means by a share. They are no larger than noise, or as large
    /// as those of most lines are where these are white, as a lens makes no scene.
    /// @param most  so large they may be
    void learn(float noise, float most, float share, Line& stripes);

private:
    float white();

    Line m_vecSegment, m_vecCopy; ///< memory
};

} // namespace velmo::camera

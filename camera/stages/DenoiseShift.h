// Not installed.
#pragma once

#include "camera/stages/DenoiseLines.h"

namespace velmo::camera {

/// How far the scene went since the last frame, in pixels.
struct SceneShift
{
    float x = 0, y = 0; ///< 0 unless it is sure
    float cut = 0;      ///< how sure it is that the whole scene is another
};

/// Finds the shift that best explains what a frame differs by from an estimate by the slopes of the estimate:
/// at half the size, by least squares in tiles none of which has more than its say.
class ShiftFinder
{
public:
    /// @param rows  and columns of a frame
    void create(int rows, int columns);

    /// A pair of lines, row 2 * `row` and the next: the estimate, and the residual in any unit.
    void put(int row, const float* const (&estimate)[2], const float* const (&residual)[2]);

    SceneShift find() const;

private:
    int m_s32Rows = 0, m_s32Columns = 0, m_s32Stride = 0; ///< of the half pictures
    Line m_vecEstimate, m_vecResidual;
};

} // namespace velmo::camera

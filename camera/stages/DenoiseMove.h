// Not installed.
#pragma once

#include "camera/stages/DenoiseLines.h"

namespace velmo::camera {

/// Pictures as they are seen from another place, by cubic interpolation. Beyond the border they go on as they
/// are.
class PictureMover
{
public:
    /// @param columns  of the widest picture
    void create(int columns);

    /// out(r, c) = in(r + y, c + x)
    /// @param stride  between the rows of both
    /// @param x, y    at most half the width, and any height
    void move(const float* in, int rows, int columns, int stride, float x, float y, float* out);

private:
    Line m_vecLine;
};

/// The squares of the weights that `move` has for a part of a pixel, summed: so much noise is left.
float keptNoise(float shift);

} // namespace velmo::camera

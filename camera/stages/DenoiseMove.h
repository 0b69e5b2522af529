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
    /// @param x, y    any
    /// @param out     may be `in`
    void move(const float* in, int rows, int columns, int stride, float x, float y, float* out);

private:
    Line m_vecLines; ///< the last few, moved across
};

/// How much of its detail a picture has lost that moves between pixels again and again, and takes over part
/// of a new one each time.
class LostDetail
{
public:
    /// Of a move by so much, or of none.
    void move(float x, float y);
    /// A share of it is new, and sharp.
    void renew(float share);

    /// The energy of what is missing, over that of a quarter of the second differences along a line, and
    /// down.
    float across() const { return energyOf(m_fX); }
    float down() const { return energyOf(m_fY); }

private:
    static float energyOf(float moves);

    float m_fX = 0, m_fY = 0; ///< what the moves took, each of the whole, that is still missing
};

/// The squares of the weights that `move` has for a part of a pixel, summed: so much noise is left.
float keptNoise(float shift);

} // namespace velmo::camera

// Not installed.
#pragma once

#include "core/Forms.h"

namespace velmo::camera {

/// What stands around each pixel of a line: the median of 5 x 5 values with the pixel at their centre (at the
/// ends of the line near it), and how far a quarter of them lies from it on the calmer side.
struct Surroundings
{
    short* median;
    short* calm; ///< at least 1
};

/// For five neighbouring lines of at least five values. `scratch` has room for 5 * count values.
using LookAround = void(const short* const lines[5], int count, short* scratch, const Surroundings& out);
LookAround lookAroundPlain;
extern const exp::Forms<LookAround> lookAround;

/// How far each pixel of the middle line stands out from the means of its opposite neighbours, where all four
/// directions agree on the side: the least of the four, twice. Edges and lines of the scene have a direction
/// in which they do not. Beyond the ends of a line stands the neighbour inside; so it has to be for lines at
/// a frame's edge.
using StandOut = void(const short* above, const short* line, const short* below, int count, int* out);
StandOut standOutPlain;
extern const exp::Forms<StandOut> standOut;

/// Running figures of a line of pixels, a value for each; all means over the frames so far.
struct Moments
{
    float* level;    ///< value less that of the first frame
    float* odd;      ///< value less the median of the surroundings
    float* movement; ///< variance of that median
    float* follow;   ///< covariance of the two
    float* restless; ///< variance of the odd part
    float* peak;     ///< what stands out, with its second, third and fourth central moment
    float* variance;
    float* skew;
    float* kurtosis;
    float* persistent; ///< +1 for a frame in which it is far above its surroundings, -1 below
};

/// What a frame says of a line.
struct NewLine
{
    const float* rise; ///< value less that of the first frame
    const short* values;
    const int* peaks; ///< twice what stands out
    Surroundings around;
    float weight; ///< of the frame, 1 for the first
};

/// Takes a frame into the figures.
void addMoments(const NewLine& line, int count, const Moments& moments);

} // namespace velmo::camera

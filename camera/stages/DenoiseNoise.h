// Not installed.
#pragma once

#include "camera/stages/DenoiseLines.h"

namespace velmo::camera {

/// Blocks of 8 x 8 pixels tell noise; of a large picture some of their rows stand for all.
constexpr int s32NoiseBlock = 8;
int everyNoiseBlockRow(int rows, int columns);

/// Noise of a picture.
struct OctaveNoise
{
    float deviation = 0;
    float most = 0;  ///< deviation of either octave, whether noise or scene
    float sure = 0;  ///< 0 to 1: that `deviation` is that of noise
    float ratio = 0; ///< of the energy of the second octave to what white noise has there
};

/// Tells noise from a scene: the energy of the finest diagonals is noise where the next octave has least; a
/// scene has more there.
class OctaveNoiseMeter
{
public:
    OctaveNoise of(const float* picture, int rows, int columns);

private:
    struct Block
    {
        float fine, coarse, structure; ///< energy: diagonal of two octaves, all of the second
    };

    void addBlocks(const float* picture, int rows, int columns, int row);

    std::vector<Block> m_vecBlocks;
    Line m_vecLines; ///< memory
};

} // namespace velmo::camera

#pragma once

#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Learns column stripes and pixel offsets that stay, and takes them away (StaticPatternRemover).
///
/// @param threshold  0 to 100: learns where a pixel differs from its neighbours by less
/// @param line       0 to 31: takes away at most this per column
/// @param pixel      0 to 31: and this per pixel
VELMO_API std::unique_ptr<Stage> makePatternStage(int threshold, int line, int pixel);

} // namespace velmo::camera

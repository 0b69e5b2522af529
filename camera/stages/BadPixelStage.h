#pragma once

#include "camera/Calibration.h"
#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include "core/Exception.h"

#include <memory>

namespace velmo::camera {

/// Puts a mean of its four replacement pixels in the place of each defective pixel: of left and right, and of
/// above and below, the pair counts for more that differs less, as edges run along it. Defective are those of
/// the calibration's records and those that its flat field flags.
///
/// If the settings ask for auto, frames pass as they are until the stage has seen 20 of them; then it
/// replaces what the search finds in these, unless that is too much to be true.
///
/// The stage throws Exception if a record lies outside a frame.
/// @returns nothing if the settings do not ask for auto, and the calibration names no pixel
VELMO_API std::unique_ptr<Stage> makeBadPixelStage(const Settings& settings, const Calibration& calibration);

} // namespace velmo::camera

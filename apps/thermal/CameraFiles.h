#pragma once

#include "camera/Calibration.h"
#include "camera/Camera.h"
#include "camera/Settings.h"
#include "recordings/FrameSource.h"
#include "recordings/Outputs.h"

namespace thermal {

/// Reads the files that settings name, and protects them from outputs: loads the palettes, of which the first
/// is taken if none is named, and returns what was measured of the camera.
/// @throws Exception  that names the file
velmo::camera::Calibration readFilesOf(velmo::camera::Settings& settings,
                                       velmo::recordings::Outputs& outputs);

/// The camera that the settings describe, for the frames of this source.
/// @throws Exception  for the settings, and for the files that they name
velmo::camera::Camera openCamera(velmo::camera::Settings settings, velmo::recordings::Outputs& outputs,
                                 const velmo::recordings::FrameSource& source);

/// Says so on standard error if noise was to be taken off a single frame: there is nothing to smooth over.
void tellOfSingleFrame(const velmo::camera::Settings& settings, std::size_t frames);

} // namespace thermal

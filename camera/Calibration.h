#pragma once

#include "camera/pixels/FlatField.h"
#include "core/Export.h"
#include "vision/imgproc/BadPixel.h"

#include <functional>
#include <string>
#include <vector>

namespace velmo::camera {

class Settings;

/// What is known of one camera, unlike settings, which are anybody's choice.
struct Calibration
{
    std::string origin = "calibration"; ///< where the bad pixels come from, for messages
    std::vector<exp::vision::BadPixel> badPixels;
    std::string flatOrigin = "calibration"; ///< where the flat field comes from
    FlatField flat = {};                    ///< empty: there is none; its defects are bad pixels, too
    std::string unit = "counts"; ///< what its values mean, as Scale::parse takes it; frames of a signed unit
                                 ///< come in the order of Scale::reorder
};

/// How to read the files that settings name, by their paths: a camera knows no files.
struct FileReaders
{
    std::function<std::string(const std::string&)> loadPalettes; ///< returns the name of the first
    std::function<std::vector<exp::vision::BadPixel>(const std::string&)> readBadPixels;
    std::function<std::vector<cv::Mat_<float>>(const std::string&)> readFlatPlanes;
};

/// What the files hold that settings name. Of loaded palettes the first is chosen if the settings name none.
/// @throws Exception  as the readers, and for planes that are no flat field
VELMO_API Calibration calibrationOf(Settings& settings, const FileReaders& files);

} // namespace velmo::camera

#include "camera/Calibration.h"

#include "camera/Settings.h"

namespace velmo::camera {

Calibration calibrationOf(Settings& settings, const FileReaders& files)
{
    if (const std::string file = settings.text("colours/palette-file"); !file.empty()) {
        const std::string first = files.loadPalettes(file);
        if (settings.text("colours/palette") == "auto")
            settings.set("colours/palette", first);
    }
    Calibration calibration;
    if (const std::string file = settings.text("pixels/records"); !file.empty() && file != "auto") {
        calibration.origin = file;
        calibration.badPixels = files.readBadPixels(file);
    }
    if (const std::string file = settings.text("pixels/flat"); !file.empty()) {
        calibration.flatOrigin = file;
        calibration.flat = FlatField::fromPlanes(files.readFlatPlanes(file), file);
    }
    return calibration;
}

} // namespace velmo::camera

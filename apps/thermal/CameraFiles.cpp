#include "apps/thermal/CameraFiles.h"

#include "apps/thermal/PixelMapFiles.h"
#include "recordings/FlatFile.h"
#include "recordings/PaletteFile.h"

#include <iostream>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

Calibration readFilesOf(Settings& settings, Outputs& outputs)
{
    if (const std::string file = settings.text("colours/palette-file"); !file.empty()) {
        const std::string first = loadPaletteFile(file);
        outputs.protect({file});
        if (settings.text("colours/palette") == "auto")
            settings.set("colours/palette", first);
    }
    Calibration calibration;
    if (const std::string file = settings.text("pixels/records"); !file.empty() && file != "auto") {
        calibration.origin = file;
        calibration.badPixels = readReplacements(file);
        outputs.protect({file});
    }
    if (const std::string file = settings.text("pixels/flat"); !file.empty()) {
        calibration.flatOrigin = file;
        calibration.flat = FlatField::fromPlanes(readFlatPlanes(file), file);
        outputs.protect({file});
    }
    return calibration;
}

Camera openCamera(Settings settings, Outputs& outputs, const FrameSource& source)
{
    Calibration calibration = readFilesOf(settings, outputs);
    calibration.unit = source.unit();
    return Camera(settings, calibration);
}

void tellOfSingleFrame(const Settings& settings, std::size_t frames)
{
    if (frames == 1 && settings.text("noise/denoise") != "off")
        std::cerr
            << "thermal: --denoise: a single frame is smoothed within itself alone; the other steps need "
               "a recording\n";
}

} // namespace thermal

#include "apps/thermal/CameraFiles.h"

#include "recordings/FlatFile.h"
#include "recordings/PaletteFile.h"
#include "recordings/PixelFiles.h"

#include <iostream>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

Calibration readFilesOf(Settings& settings, Outputs& outputs)
{
    const auto protect = [&](const std::string& file, auto read) {
        auto content = read(file);
        outputs.protect({file});
        return content;
    };
    return calibrationOf(settings, {[&](const std::string& file) { return protect(file, loadPaletteFile); },
                                    [&](const std::string& file) { return protect(file, readReplacements); },
                                    [&](const std::string& file) { return protect(file, readFlatPlanes); }});
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

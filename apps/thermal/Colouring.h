#pragma once

#include "apps/thermal/Palettes.h"
#include "apps/thermal/PictureSink.h"
#include "apps/thermal/Range.h"

#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace thermal {

/// What chooses the colours, as typed.
struct ColourOptions
{
    std::string usual = "Ironbow"; ///< if neither of the following is given
    std::string palette;
    std::string paletteFile;
    std::vector<std::string> regions; ///< LOW:HIGH:RRGGBB each

    void addTo(CLI::App& command);
};

/// Turns frames into pictures in the colours of a palette.
class Colouring
{
public:
    explicit Colouring(Palette palette);

    /// @throws UsageError  that names option and value
    explicit Colouring(const ColourOptions& options);

    Picture paint(const Frame& frame, ValueRange range);

    /// The same into a picture that is reused if it has the size already.
    void paint(const Frame& frame, ValueRange range, Picture& picture);

private:
    void addRegion(unsigned id, const std::string& text);

    velmo::vision::ColorPaletteConverter m_oConverter{true};
    Palette m_oPalette;
    std::optional<ValueRange> m_oBuiltFor;
};

} // namespace thermal

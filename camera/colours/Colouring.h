#pragma once

#include "camera/colours/Palettes.h"
#include "camera/colours/Range.h"
#include "recordings/PictureSink.h"

#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace thermal {

/// The air of a room.
struct Air
{
    float celsius;
    float percent; ///< relative humidity

    /// @param text  CELSIUS:PERCENT
    /// @throws UsageError  that names option and value
    static Air parse(const std::string& text);

    /// The temperature at which it condenses.
    float dewPoint() const;
};

/// What chooses the colours, as typed.
struct ColourOptions
{
    std::string usual = "Ironbow"; ///< if neither of the following is given
    std::string palette;
    std::string paletteFile;
    std::vector<std::string> regions; ///< LOW:HIGH:RRGGBB each
    std::string humidity;             ///< CELSIUS:PERCENT; empty: the palette shows temperatures

    void addTo(CLI::App& command);
};

/// Turns frames into pictures in the colours of a palette, by temperature or, given the air of the room, by
/// the humidity that it reaches at each surface.
class Colouring
{
public:
    explicit Colouring(Palette palette);

    /// @throws UsageError  that names option and value
    explicit Colouring(const ColourOptions& options);

    /// By humidity the range plays no role.
    Picture paint(const Frame& frame, ValueRange range);

    /// The same into a picture that is reused if it has the size already.
    void paint(const Frame& frame, ValueRange range, Picture& picture);

    const Palette& palette() const { return m_oPalette; }
    const std::optional<Air>& air() const { return m_oAir; }

private:
    void buildTable(ValueRange range);
    void addRegion(unsigned id, const std::string& text);

    velmo::vision::ColorPaletteConverter m_oConverter{true};
    Palette m_oPalette;
    std::optional<Air> m_oAir;
    std::optional<ValueRange> m_oBuiltFor;
};

} // namespace thermal

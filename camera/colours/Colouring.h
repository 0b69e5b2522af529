#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/colours/Palettes.h"
#include "camera/colours/Range.h"
#include "camera/temperature/Air.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>
#include <string>

namespace velmo::camera {

/// Raw values `low` to `high`, both included, in one colour.
struct VELMO_API ValueBand
{
    unsigned short low;
    unsigned short high;
    unsigned colour; ///< 0xRRGGBB

    /// @param text  LOW:HIGH:RRGGBB
    /// @param what  begins the message of what is refused
    /// @throws Exception  for anything else
    static ValueBand parse(const std::string& text, const std::string& what);
};

/// Turns frames into pictures in the colours of a palette, by temperature or, given the air of the room, by
/// the humidity that it reaches at each surface.
class VELMO_API Colouring
{
public:
    explicit Colouring(Palette palette);

    /// From now on colours show humidity, and ranges play no role. Values are hundredths of a kelvin.
    void setAir(Air air);

    /// Paints a band of values over the palette. Where bands overlap, the last one wins.
    void addBand(const ValueBand& band);

    Picture paint(const Frame& frame, ValueRange range);

    /// The same into a picture that is reused if it has the size already.
    void paint(const Frame& frame, ValueRange range, Picture& picture);

    const Palette& palette() const { return m_oPalette; }
    const std::optional<Air>& air() const { return m_oAir; }

private:
    void buildTable(ValueRange range);

    vision::ColorPaletteConverter m_oConverter{true};
    Palette m_oPalette;
    std::optional<Air> m_oAir;
    std::optional<ValueRange> m_oBuiltFor;
    unsigned m_u32Bands = 0;
};

} // namespace velmo::camera

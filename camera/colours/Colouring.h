#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/Settings.h"
#include "camera/colours/Palettes.h"
#include "camera/colours/Range.h"
#include "camera/temperature/Air.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>

namespace velmo::camera {

/// Turns frames into pictures in the colours of a palette, by temperature or, given the air of the room, by
/// the humidity that it reaches at each surface.
class VELMO_API Colouring
{
public:
    explicit Colouring(Palette palette);

    /// colours/palette, colours/regions and colours/humidity; palettes of files are to be loaded before.
    /// @throws Exception  for a palette that does not exist, and for humidity together with regions
    explicit Colouring(const Settings& settings);

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
};

} // namespace velmo::camera

#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/Settings.h"
#include "camera/colours/ColourTable.h"
#include "camera/colours/Range.h"
#include "camera/colours/Tone.h"
#include "camera/temperature/Air.h"
#include "camera/temperature/Thermometer.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>

namespace velmo::camera {

/// Turns frames into pictures in the colours of a table. With a tone, in the order in which frames come: it
/// follows them.
class VELMO_API Colouring
{
public:
    explicit Colouring(Palette palette) : m_oTable(std::move(palette)) {}

    /// colours/palette, tone, detail, regions, isotherms, humidity, mould, insulation; palettes of files are
    /// to be loaded before.
    /// @throws Exception  for a palette that does not exist, for what the thermometer cannot read, and for
    ///                    settings that contradict each other
    Colouring(const Settings& settings, const Thermometer& thermometer);

    Picture paint(const Frame& frame, ValueRange range);

    /// The same into a picture that is reused if it has the size already.
    void paint(const Frame& frame, ValueRange range, Picture& picture);

    /// Has the colours of the last picture: of its values, of what its values are with their details
    /// amplified, or, with a local tone, of places in the palette.
    ColourTable& table() { return m_oTable; }
    const ColourTable& table() const { return m_oTable; }

    /// The values that have this colour in the last picture; see ColourTable.
    std::optional<ValueRange> valueAt(const cv::Vec3b& colour) { return m_oTable.valueAt(colour); }

    /// Whether no colour of the last picture stands for two bands of values.
    bool isUnambiguous() { return m_oTable.isUnambiguous(); }

    /// That whose humidity at surfaces is shown.
    const std::optional<Air>& air() const { return m_oAir; }

private:
    void handOver();
    void paintIsotherms(const Frame& frame, Picture& picture) const;

    ColourTable m_oTable;
    ToneRule m_oTone;
    std::optional<Air> m_oAir;
    vision::ColorPaletteConverter m_oConverter{true};
    Palette m_vecPoints; ///< kept for its memory
};

} // namespace velmo::camera

#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/Settings.h"
#include "camera/colours/ColourTable.h"
#include "camera/colours/Range.h"
#include "camera/temperature/Air.h"
#include "camera/temperature/Thermometer.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/ColorPaletteConverter.h"

#include <optional>

namespace velmo::camera {

/// Turns frames into pictures in the colours of a table.
class VELMO_API Colouring
{
public:
    explicit Colouring(Palette palette) : m_oTable(std::move(palette)) {}

    /// colours/palette, regions, isotherms, humidity, mould, insulation; palettes of files are to be loaded
    /// before.
    /// @throws Exception  for a palette that does not exist, for what the thermometer cannot read, and for
    ///                    settings that contradict each other
    Colouring(const Settings& settings, const Thermometer& thermometer);

    Picture paint(const Frame& frame, ValueRange range);

    /// The same into a picture that is reused if it has the size already.
    void paint(const Frame& frame, ValueRange range, Picture& picture);

    /// Has the colours of the last picture.
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

    ColourTable m_oTable;
    std::optional<Air> m_oAir;
    vision::ColorPaletteConverter m_oConverter{true};
    Palette m_vecPoints; ///< kept for its memory
};

} // namespace velmo::camera

#pragma once

#include "camera/colours/Isotherm.h"
#include "camera/colours/Palettes.h"
#include "camera/colours/Range.h"
#include "camera/temperature/Air.h"
#include "camera/temperature/Scale.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo::camera {

/// The colours (blue, green, red) of all values. A palette goes over a range of values, or over percents that
/// are worked out of their temperatures; isotherms lie over it. Whatever is chosen, a frame costs one look-up
/// per pixel.
///
/// The palette fills its range from end to end: its first colour is that of the lowest value and of all
/// below, its last that of the highest and of all above.
class VELMO_API ColourTable
{
public:
    static constexpr int s32PercentSteps = 1001; ///< tenths of a percent

    explicit ColourTable(Palette palette);

    /// Colours show the relative humidity that this air reaches at surfaces, and ranges play no role.
    ///
    /// @param air    of the room
    /// @param scale  from values to the temperatures of surfaces
    /// @param mould  the palette ends at 80 percent, where mould begins to grow; from there on yellow to red
    /// @throws Exception  for a scale without temperatures
    void showHumidity(const Air& air, const Scale& scale, bool mould);

    /// Colours show where on the way from outside to inside temperatures lie, and ranges play no role: 0
    /// percent is as cold as outside, 100 as warm as inside; beyond them they stay the same.
    ///
    /// @throws Exception  for a scale without temperatures, and where inside and outside are the same
    void showInsulation(double insideCelsius, double outsideCelsius, const Scale& scale);

    /// Paints a band of values over the palette. Where bands overlap, the last one wins.
    void add(Isotherm isotherm);

    /// Where the values of the next range stand in the palette, 0 to 65535, never falling; none: evenly. Are
    /// there not as many as the range has values, they count for nothing.
    void setPlaces(const std::vector<unsigned short>& places);

    /// Colours are no longer of values but of places in the palette, 0 to 65535, and ranges and isotherms
    /// play no role.
    void showPlaces();
    bool showsPlaces() const { return m_bPlaces; }

    /// What a legend has to say of the colours.
    void setNote(std::string note) { m_strNote = std::move(note); }
    const std::string& note() const { return m_strNote; }

    /// Makes the colours of a range. Returns false if they are those of the last call.
    bool build(ValueRange range);

    /// How many times colours were made; another number means other colours.
    std::size_t builds() const { return m_nBuilds; }

    /// The 65,536 colours of the last build.
    const std::vector<cv::Vec3b>& colours() const { return m_vecColours; }

    /// The same without isotherms.
    const std::vector<cv::Vec3b>& paletteColours() const
    {
        return m_vecUnder.empty() ? m_vecColours : m_vecUnder;
    }

    /// Where the values of the last range stand in the palette; none if they stand evenly.
    const std::vector<unsigned short>& places() const { return m_vecPlaces; }

    /// A range outside which colours do not change any more.
    ValueRange varying() const;

    /// The first and the last of the values of the range (of all, if they stand for percents) that have
    /// this colour in the last build; nothing if none has, and where colours are of places. The inverse of
    /// colours() where isUnambiguous().
    std::optional<ValueRange> valueAt(const cv::Vec3b& colour);

    /// Whether no colour stands for two bands of values with others between them, as it does if the palette
    /// or an isotherm has it again, or if colours are of places.
    bool isUnambiguous();

    const Palette& palette() const { return m_oPalette; }
    const std::vector<Isotherm>& isotherms() const { return m_vecIsotherms; }

    /// The colours of 0, 0.1, ... 100 percent where colours show percents, otherwise none.
    const std::vector<cv::Vec3b>& percentColours() const { return m_vecPercentColours; }

private:
    struct Band
    {
        cv::Vec3b colour;
        ValueRange values;
    };

    void showPercents(const std::vector<float>& percents);
    void fill(ValueRange range);
    void paint(const Isotherm& isotherm);
    const std::vector<Band>& bands();

    Palette m_oPalette;
    std::vector<Isotherm> m_vecIsotherms;
    std::vector<cv::Vec3b> m_vecPercentColours;
    std::vector<unsigned short> m_vecTenths; ///< of all values, where they stand for percents
    std::vector<unsigned short> m_vecPlaces;
    std::vector<cv::Vec3b> m_vecFine; ///< the palette, finer than any picture shows it, for places
    bool m_bPlaces = false;
    std::string m_strNote;
    std::vector<cv::Vec3b> m_vecColours;
    std::vector<cv::Vec3b> m_vecUnder; ///< without isotherms; empty if there are none
    std::optional<ValueRange> m_oBuiltFor;
    std::size_t m_nBuilds = 0;
    std::vector<Band> m_vecBands; ///< of equal colour, in order of colours; empty until they are wanted
};

} // namespace velmo::camera

#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/memory/DeepMat.h"
#include "core/memory/ResetByMove.h"
#include "core/quantity/MarkedFloat.h"
#include "core/quantity/Relation.h"
#include "core/quantity/Temperature.h"
#include "vision/imgproc/ColorRegion.h"

#include <opencv2/core.hpp>

#include <map>
#include <vector>

namespace velmo::vision {

/// Turns 16-bit frames into false-colour pictures. A palette (colour points of three bytes each: red, green,
/// blue, the coldest first) is stretched linearly over a range of frame values into a table with one entry
/// per possible value; a frame is then coloured with one table read per pixel. Regions paint bands of values
/// in a colour of their own over the palette.
///
/// Holds the table, the regions and the last stretched palette. One object per picture stream, used by one
/// thread at a time. Copies are independent; a moved-from converter is as if newly made with its flag.
class VELMO_API ColorPaletteConverter
{
public:
    using Frame = cv::Mat_<unsigned short>;
    using Picture = cv::Mat_<cv::Vec<unsigned char, 3>>;
    using AirTemperature = exp::quantity::Temperature<exp::MarkedFloat>;
    using AirHumidity = exp::quantity::Relation<exp::MarkedFloat>;

    /// @param bgr  true: pictures are blue, green, red; false: red, green, blue
    explicit ColorPaletteConverter(bool bgr);
    virtual ~ColorPaletteConverter();

    ColorPaletteConverter(const ColorPaletteConverter& other);
    ColorPaletteConverter& operator=(const ColorPaletteConverter& other);
    ColorPaletteConverter(ColorPaletteConverter&& other) noexcept;
    ColorPaletteConverter& operator=(ColorPaletteConverter&& other) noexcept;

    /// Colours a frame; builds the table first if `rebuild` is set, otherwise `min`, `max` and `palette`
    /// change nothing and the colours of the last build stay.
    ///
    /// A frame whose pixel count is not a multiple of 4 takes a slower path instead: it always shows the
    /// palette and range of this very call, neither uses nor changes the table, clamps values outside [min,
    /// max] to it, shows `max` in the hottest colour (the table shows it in the second hottest), takes the
    /// bands of regions relative to `min`, and for blue-green-red pictures shows region colours with red and
    /// blue exchanged.
    ///
    /// @param src      rows x cols, any size, also empty; rows may be padded
    /// @param dst      becomes rows x cols; reused if it has that size already, rows may be padded then
    /// @param min, max  the range of values that the palette is stretched over
    /// @param rebuild   whether to build the table anew
    /// @param palette   3 x N bytes, N at least 1; only read
    /// @throws cv::Exception  for an empty palette, a length that is no multiple of 3, or max < min, where
    ///                        the palette is used, and for a band outside the range on the slower path; the
    ///                        table is unchanged then and nothing is coloured
    void palletize(const Frame& src, Picture& dst, unsigned short min, unsigned short max, bool rebuild,
                   std::vector<unsigned char>& palette);

    /// Colours a frame of any pixel count from the table as it is.
    ///
    /// @throws Exception  if `dst` has not the size of `src`; `dst` is untouched then
    void palletizeFast(const Frame& src, Picture& dst);

    /// Builds the table: values below `min` in the coldest colour, from `max` on in the one that `max` - 1
    /// has; then the regions. A palette and a span max - min as last time are not stretched again.
    ///
    /// @throws cv::Exception  as palletize
    void resizeLookupTable(unsigned short min, unsigned short max, std::vector<unsigned char>& palette);

    /// Colours a frame by the relative humidity that room air reaches at surfaces of its temperatures; the
    /// palette runs from 0 to 100 percent. The table is built if the air differs from that of the last build
    /// (marks do not count) or `rebuild` is set; pass that after another palette or after a table build by
    /// palletize. Regions are not painted.
    ///
    /// @param src  values on the scale of RadiometricTools, a multiple of 4 pixels
    /// @param dst  as in palletize
    /// @param airTemperature, humidity  of the room's air
    /// @param rebuild, palette          as in palletize
    /// @throws Exception      if the pixel count is not a multiple of 4 (`dst` has its new size then), and as
    ///                        DewPoint::calcSurfaceMoisture; the air counts as that of the last build
    ///                        from then on, although the table is unchanged
    /// @throws cv::Exception  as palletize
    void palletizeHumid(const Frame& src, Picture& dst, const AirTemperature& airTemperature,
                        const AirHumidity& humidity, bool rebuild, std::vector<unsigned char>& palette);

    /// Builds the table for palletizeHumid, in steps of a tenth of a percent.
    ///
    /// @throws Exception, cv::Exception  as palletizeHumid; the table is unchanged then
    void resizeLookupTableHumid(const AirTemperature& airTemperature, const AirHumidity& humidity,
                                std::vector<unsigned char>& palette);

    /// Adds region `id` or replaces it; ignored if `upper` < `lower`. It shows from the next table build on.
    /// Where regions overlap, the highest id wins.
    ///
    /// @param id            chosen by the caller
    /// @param upper, lower  highest and lowest value of the band, both in it
    /// @param color         0x00RRGGBB
    void createColorRegion(unsigned int id, unsigned short upper, unsigned short lower, unsigned int color);

    /// Removes region `id` if there is one. What it painted stays until the next table build.
    void deleteColorRegion(unsigned int id);

    /// Paints all regions into the table. The range plays no role.
    void fillColorRegions(unsigned short min, unsigned short max);

    /// Paints all regions into a stretched palette of 1 x W entries; bands are positions in it.
    ///
    /// @throws cv::Exception  for a band that leaves it; regions of lower ids are painted then
    void fillColorRegionsRgb(Picture table, unsigned short min, unsigned short max);

private:
    unsigned int* table();
    const unsigned int* stretched(int span, const std::vector<unsigned char>& palette);
    Picture stretchedRgb(int span, const std::vector<unsigned char>& palette);
    void palletizeSlowly(const Frame& src, Picture& dst, unsigned short min, unsigned short max,
                         const std::vector<unsigned char>& palette);

    /// Equals no temperature, so that the first humidity picture builds its table.
    static AirTemperature noTemperature();

    exp::DeepMat<cv::Vec4b> m_oLookupTable;                                ///< 1 x 65536; none after a move
    exp::ResetByMove<AirTemperature, noTemperature> m_oLastAirTemperature; ///< of the last humidity table
    AirHumidity m_oLastHumidity;
    std::map<unsigned int, ColorRegion> m_mapColorRegions;
    bool m_bBgr;
    std::vector<unsigned char> m_aStretchedPalette; ///< what the next one was stretched from
    std::vector<unsigned int> m_aStretched;         ///< entries like those of the table; empty if none
};

} // namespace velmo::vision

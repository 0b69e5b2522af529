#include "camera/settings/Keys.h"

#include "core/Exception.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velmo::camera {
namespace {

using exp::vision::SpatialNoiseRemover;
using exp::vision::StaticPatternRemover;
using Temporal = exp::vision::TemporalNoiseReduction<unsigned short>;

constexpr auto whole = Field::Kind::Whole;
constexpr auto number = Field::Kind::Number;
constexpr auto percentile = Field::Kind::Percentile;
constexpr auto colour = Field::Kind::Colour;
constexpr auto value = Field::Kind::Value;
constexpr auto above = Field::Order::Above;

ValueKind flag()
{
    return {{"false", "true"}, {}, "", false};
}

ValueKind words(std::vector<std::string> words)
{
    return {std::move(words), {}, "", false};
}

ValueKind text(const std::string& name)
{
    return {{}, {}, name, false};
}

ValueKind texts(const std::string& name)
{
    return {{}, {}, name, true};
}

/// A temperature in any degrees that there are.
Field temperature(const char* name)
{
    return {name, number, -460, 10000};
}

/// Numbers, or one of some words instead.
ValueKind form(Form form, std::vector<std::string> words = {})
{
    return {std::move(words), {std::move(form)}, "", false};
}

std::vector<Key> makeKeys()
{
    const int maxThreshold = StaticPatternRemover::s32MaxThreshold;
    const int maxLimit = StaticPatternRemover::s32MaxLimit;
    return {
        {"pixels/flat", "--flat", text("FILE"), "", "",
         "Take off how far each pixel is off, before anything else, and replace those that are defective: a "
         "flat field that 'thermal flat learn' wrote"},
        {"pixels/records",
         "--bad-pixels",
         {{"auto"}, {}, "FILE", false},
         "",
         "",
         "Replace defective pixels before noise is looked at: those of a map that 'thermal pixels find' "
         "wrote, or "
         "of records; auto learns them on the first 20 frames"},

        {"temperature/unit", "--unit", text("UNIT"), "", "auto",
         "What values mean: counts, centikelvin, decikelvin, kelvin/16, kelvin/64, celsius/10, "
         "linear:GAIN:OFFSET or planck:R1,B,F,O,R2; auto is what the recording says, or else counts"},
        {"temperature/degrees", "--degrees", words({"C", "K", "F"}), "", "C",
         "Temperatures are typed and read in degrees Celsius, in kelvin or in degrees Fahrenheit"},
        {"temperature/emissivity", "--emissivity", form({{"E", number, 0.01, 1}}), "", "1",
         "How much of the radiation of a black body things send; the rest they mirror"},
        {"temperature/reflected", "--reflected", form({temperature("T")}, {"auto"}), "degrees", "auto",
         "Temperature of what things mirror; auto is 20 °C"},
        {"temperature/transmission", "--transmission", form({{"X", number, 0.01, 1}}, {"auto"}), "", "auto",
         "Share of the radiation that the air lets through; auto is that of distance and air"},
        {"temperature/distance", "--distance", form({{"M", number, 0, 100000}}, {"off"}), "metres", "off",
         "How far things are; needs their air"},
        {"temperature/air", "--air", form({temperature("T"), {"PERCENT", number, 0, 100}}, {"off"}), "",
         "off",
         "Temperature and relative humidity of the air on the way; where only a transmission is given it is "
         "as warm as what things mirror"},
        {"temperature/window", "--window", form({{"X", number, 0.01, 1}, temperature("T")}, {"off"}), "",
         "off", "Share of the radiation that a window before the camera lets through, and its temperature"},
        {"temperature/band", "--band", text("B[,F]"), "", "auto",
         "What linear units see: B and F of 1 / (exp(B/T) - F), or the word total for T to the fourth; auto "
         "is 1430,1, or the constants of a planck unit"},

        {"noise/denoise", "--denoise", words({"off", "light", "normal", "strong"}), "", "off",
         "Take noise and stripes off, whatever the camera; finds out by itself how large they are", "normal"},
        {"noise/pattern", "--pattern",
         form({{"THRESHOLD", whole, 0, double(maxThreshold)},
               {"LINE", whole, 0, double(maxLimit)},
               {"FRAME", whole, 0, double(maxLimit)}},
              {"off"}),
         "counts", "off",
         "Static pattern remover: learns where a pixel differs from its neighbours by less than THRESHOLD, "
         "takes away at most LINE per column and FRAME per pixel"},
        {"noise/temporal", "--temporal",
         form({{"GAIN", whole, 0, Temporal::u8MaxControlGain},
               {"FACTOR", whole, 0, Temporal::u16MaxFeedbackFactor}},
              {"off"}),
         "", "off",
         "Temporal noise filter: the higher GAIN, the sooner it lets changes pass; the higher FACTOR, the "
         "smoother"},
        {"noise/spatial", "--spatial", form({{"GAIN", whole, 0, SpatialNoiseRemover::s32MaxGain}}, {"off"}),
         "", "off", "Spatial noise remover: the higher GAIN, the smoother"},

        {"frame/downsize", "--downsize", words({"off", "160x120", "120x90"}), "pixels", "off",
         "Shrink frames of 240x180"},

        {"colours/palette", "--palette", text("NAME"), "", "auto",
         "The colours, one of 'thermal palettes'; auto is the first of the palette file, or else Humidity, "
         "for mould Grayscale, for insulation Bluered, or else Ironbow"},
        {"colours/palette-file", "--palette-file", text("FILE"), "", "", "An XML file of further palettes"},
        {"colours/range",
         "--range",
         {{"auto", "lock"},
          {{{"MIN", value}, {"MAX", value}},
           {{"pLOW", percentile, 0, 100}, {"pHIGH", percentile, 0, 100, above}}},
          "",
          false},
         "degrees or counts",
         "auto",
         "Values at the ends of the palette: auto (of the frames, gliding after them), lock (of the first 10 "
         "frames "
         "together, held; widened if more than 1 % of a frame lies outside), fixed ones, or percentiles like "
         "p1:p99"},
        {"colours/tone", "--tone", words({"linear", "plateau", "local"}), "", "linear",
         "How the values of the range share out the palette: evenly (linear), by how many pixels have them "
         "(plateau), or differently from place to place (local), so that colours are no temperatures any "
         "more; noise limits what any of them gets"},
        {"colours/detail", "--detail", form({{"N", number, 1, 10}}, {"off"}), "", "off",
         "Amplify what is fine up to N times, as far as it stands out of the noise; exact values stay"},
        {"colours/regions",
         "--region",
         {{}, {{{"LOW", value}, {"HIGH", value}, {"RRGGBB", colour}}}, "", true},
         "degrees or counts",
         "",
         "Paint the values LOW to HIGH in one colour; where regions overlap, the last one wins"},
        {"colours/isotherms", "--isotherm", texts("KIND:T[:T]:RRGGBB[:blend]"), "degrees or counts", "",
         "Paint what is above:T, below:T or between:T:T in one colour, with :blend as bright as the palette "
         "is there; they lie over regions, the last one on top, and stand in the legend"},
        {"colours/humidity", "--humidity", form({temperature("T"), {"PERCENT", number, 0, 100}}, {"off"}), "",
         "off",
         "Colour by the relative humidity that air of this temperature and humidity reaches at each surface; "
         "without a unit, values are hundredths of a kelvin"},
        {"colours/mould", "--mould", flag(), "", "false",
         "With humidity: from 80 percent on, where mould grows, yellow to red whatever the palette"},
        {"colours/insulation", "--insulation", form({temperature("IN"), temperature("OUT")}, {"off"}),
         "degrees", "off",
         "Colour by how warm surfaces are on the way from outside (0 percent) to inside (100); without a "
         "unit, values are hundredths of a kelvin"},

        {"picture/scale", "--scale", form({{"N", whole, 1, 16}}), "", "1",
         "Enlarge N times; every pixel becomes a square"},
        {"picture/legend", "--legend", flag(), "", "false", "Add a bar of the colours with their values"},

        {"blobs/above", "--above", form({{"VALUE", value}}, {"off"}), "degrees or counts", "off",
         "Blobs are of values above this one"},
        {"blobs/below", "--below", form({{"VALUE", value}}, {"off"}), "degrees or counts", "off",
         "Blobs are of values below this one"},
        {"blobs/min-size", "--min-size", form({{"N", whole, 1, 1000000}}), "pixels", "4",
         "Leave out smaller blobs"},
    };
}

constexpr std::size_t nLongest = 64; // letters of a word that is compared: one bit for each

/// A word that others are compared with, letter by letter against all places at once: E. W. Myers, "A fast
/// bit-vector algorithm for approximate string matching based on dynamic programming", 1999, in the form that
/// H. Hyyrö gave it for whole words, 2003.
class Spelling
{
public:
    explicit Spelling(std::string_view word) : m_nLength(word.size())
    {
        for (std::size_t i = 0; i < word.size(); ++i)
            m_arrPlaces[static_cast<unsigned char>(word[i])] |= std::uint64_t{1} << i;
    }

    /// How many letters have to be put in, taken out or changed to make one word of the other.
    std::size_t distance(std::string_view other) const
    {
        if (m_nLength == 0)
            return other.size();
        // A bit for each row of the table of distances: whether the one below it is one more, or one less.
        std::uint64_t more = ~std::uint64_t{0}, less = 0;
        std::size_t last = m_nLength;
        for (const char letter : other) {
            const std::uint64_t same = m_arrPlaces[static_cast<unsigned char>(letter)];
            const std::uint64_t kept = (((same & more) + more) ^ more) | same | less;
            std::uint64_t grown = less | ~(kept | more), shrunk = more & kept; // since the column before
            last += grown >> (m_nLength - 1) & 1;
            last -= shrunk >> (m_nLength - 1) & 1;
            grown = grown << 1 | 1;
            shrunk <<= 1;
            more = shrunk | ~(kept | grown);
            less = kept & grown;
        }
        return last;
    }

private:
    std::size_t m_nLength;
    std::array<std::uint64_t, 256> m_arrPlaces{}; ///< bits of the places where a letter stands
};

std::string_view lastPart(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

/// The key whose path is most like this one; in another section the right name counts as near.
const Key& nearestTo(std::string_view path)
{
    const Spelling spelt(path), name(lastPart(path));
    const auto far = [&](const Key& key) {
        return std::min(spelt.distance(key.path), name.distance(lastPart(key.path)) + 1);
    };
    return *std::min_element(keys().begin(), keys().end(),
                             [&](const Key& one, const Key& other) { return far(one) < far(other); });
}

} // namespace

const std::vector<Key>& keys()
{
    static const std::vector<Key> table = makeKeys();
    return table;
}

const Key& keyOf(const std::string& path)
{
    const auto found =
        std::find_if(keys().begin(), keys().end(), [&](const Key& key) { return key.path == path; });
    if (found != keys().end())
        return *found;
    const std::string shown = path.substr(0, nLongest);
    VELMO_THROW("there is no setting '" + shown + "'; the nearest is " + nearestTo(shown).path);
}

} // namespace velmo::camera

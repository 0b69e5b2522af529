#include "camera/temperature/Scale.h"

#include "camera/settings/Parse.h"
#include "core/Exception.h"
#include "vision/radiometry/RadiometricTools.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velmo::camera {
namespace {

constexpr double dCoolestMedian = -60;
constexpr double dHottestMedian = 1500;
constexpr double dUsualMedian = 20;
constexpr int s32SignBit = 0x8000;

/// A unit without constants of its own.
struct LinearUnit
{
    const char* name;
    bool isSigned;
    double (*celsius)(int value); ///< of a value in the order of meaning
};

// Divisions, not products by tenths and hundredths: those are no binary numbers.
constexpr LinearUnit units[] = {
    {"centikelvin", false,
     [](int value) {
         return double{vision::RadiometricTools::getFloat(static_cast<unsigned short>(value))};
     }},
    {"decikelvin", false, [](int value) { return (10 * value - 27315) / 100.0; }},
    {"kelvin/16", false, [](int value) { return value / 16.0 + dAbsoluteZero; }},
    {"kelvin/64", false, [](int value) { return value / 64.0 + dAbsoluteZero; }},
    {"celsius/10", true, [](int value) { return (value - s32SignBit) / 10.0; }},
};

constexpr const char* pKinds = "counts, centikelvin, decikelvin, kelvin/16, kelvin/64, celsius/10, "
                               "linear:GAIN:OFFSET or planck:R1,B,F,O,R2";

template <class Formula>
std::vector<float> tableOf(const Formula& celsius)
{
    std::vector<float> table(Scale::s32Values);
    for (int value = 0; value < Scale::s32Values; ++value) {
        const auto rounded = static_cast<float>(celsius(value));
        table[static_cast<std::size_t>(value)] =
            rounded >= static_cast<float>(dAbsoluteZero) ? rounded : fBelow;
    }
    return table;
}

/// The numbers behind the name of a unit.
std::vector<double> constants(const std::string& text, char separator, const std::vector<const char*>& names)
{
    Form form;
    for (const char* name : names)
        form.push_back({name, Field::Kind::Number, -1e12, 1e12});
    const std::size_t colon = text.find(':');
    return parseForm(text.substr(colon + 1), "unit " + text.substr(0, colon), form, separator);
}

void requirePositive(const std::string& text, const char* name, double value)
{
    if (value <= 0)
        VELMO_THROW("unit " + text + ": " + name + " is " + numberText(value) + ", not above 0");
}

void requireRising(const std::string& text, const std::vector<float>& celsius)
{
    if (std::none_of(celsius.begin(), celsius.end(), [](float each) { return std::isfinite(each); }))
        VELMO_THROW("unit " + text + ": no value from 0 to 65535 has a temperature");
    for (std::size_t value = 1; value < celsius.size(); ++value)
        if (std::isfinite(celsius[value]) && !(celsius[value] > celsius[value - 1]))
            VELMO_THROW("unit " + text + ": the values " + std::to_string(value - 1) + " and " +
                        std::to_string(value) + " are both " + degreesText(celsius[value], 4) +
                        " °C in single precision");
}

} // namespace

Scale::Scale(Table table, const std::string& name) : m_pTable(std::make_shared<const Table>(std::move(table)))
{
    requireRising(name, m_pTable->celsius);
}

Scale Scale::parse(const std::string& text)
{
    if (text == "counts")
        return {};
    for (const LinearUnit& unit : units)
        if (text == unit.name)
            return Scale({text, unit.isSigned, std::nullopt, tableOf(unit.celsius)}, text);
    if (text.rfind("linear:", 0) == 0) {
        const std::vector<double> values = constants(text, ':', {"GAIN", "OFFSET"});
        const double gain = values[0], offset = values[1];
        requirePositive(text, "GAIN", gain);
        return Scale({linearText(gain, offset), false, std::nullopt,
                      tableOf([=](int value) { return gain * value + offset; })},
                     text);
    }
    if (text.rfind("planck:", 0) == 0)
        return planck(text);
    VELMO_THROW("unit: '" + text + "' is not " + pKinds);
}

Scale Scale::planck(const std::string& text)
{
    const std::vector<double> values = constants(text, ',', {"R1", "B", "F", "O", "R2"});
    const double r1 = values[0], b = values[1], f = values[2], o = values[3], r2 = values[4];
    requirePositive(text, "R1", r1);
    requirePositive(text, "B", b);
    requirePositive(text, "R2", r2);
    const auto celsius = [=](int value) -> double {
        if (value + o <= 0)
            return fBelow;
        const double ratio = r1 / (r2 * (value + o)) + f;
        return ratio > 1 ? b / std::log(ratio) + dAbsoluteZero : double{fAbove};
    };
    std::string shortest = "planck:";
    for (const double value : values)
        shortest += numberText(value) + ",";
    shortest.pop_back();
    return Scale({shortest, false, Band{b, f, false}, tableOf(celsius)}, shortest);
}

std::string Scale::linearText(double gain, double offset)
{
    return "linear:" + numberText(gain) + ":" + numberText(offset);
}

const std::string& Scale::text() const
{
    static const std::string counts = "counts";
    return m_pTable ? m_pTable->text : counts;
}

bool Scale::isSigned() const
{
    return m_pTable && m_pTable->isSigned;
}

const std::optional<Band>& Scale::band() const
{
    static const std::optional<Band> none;
    return m_pTable ? m_pTable->band : none;
}

unsigned short Scale::first() const
{
    if (!hasDegrees())
        return 0;
    const auto found = std::upper_bound(celsius().begin(), celsius().end(), fBelow);
    return static_cast<unsigned short>(found - celsius().begin());
}

unsigned short Scale::last() const
{
    if (!hasDegrees())
        return s32Values - 1;
    const auto found = std::lower_bound(celsius().begin(), celsius().end(), fAbove);
    return static_cast<unsigned short>(found - celsius().begin() - 1);
}

double Scale::slope(unsigned short value) const
{
    // Across some values, so that the rounding of the table does not count.
    constexpr int s32Reach = 16;
    if (!std::isfinite(celsius(value)))
        return 0;
    const auto low = static_cast<unsigned short>(std::max<int>(first(), value - s32Reach));
    const auto high = static_cast<unsigned short>(std::min<int>(last(), value + s32Reach));
    return low < high ? (double{celsius(high)} - celsius(low)) / (high - low) : 0;
}

Scale Scale::ofObjects(const Radiometry& radiometry) const
{
    if (!hasDegrees())
        VELMO_THROW("emissivity and surroundings need a unit other than counts");
    if (radiometry.changesNothing())
        return *this;
    Table objects = *m_pTable;
    for (float& each : objects.celsius)
        each = static_cast<float>(radiometry.object(each));
    return Scale(std::move(objects), text() + " through the given emissivity, reflection, air and window");
}

std::string Scale::doubt(unsigned short median, Degrees degrees) const
{
    const auto read = [degrees](double celsius) {
        const std::string number = degreesText(degrees.fromCelsius(celsius), 1);
        return std::isfinite(celsius) ? number + " " + degrees.symbol() : number + " all temperatures";
    };
    const double seen = celsius(median);
    if (seen >= dCoolestMedian && seen <= dHottestMedian)
        return {};
    const int inFile = median ^ (isSigned() ? s32SignBit : 0);
    const auto in = [&](const LinearUnit& unit) {
        return unit.celsius(inFile ^ (unit.isSigned ? s32SignBit : 0));
    };
    const LinearUnit& nearest =
        *std::min_element(std::begin(units), std::end(units), [&](const auto& left, const auto& right) {
            return std::abs(in(left)-dUsualMedian) < std::abs(in(right)-dUsualMedian);
        });
    const std::string start = "the median is " + read(seen) + " in " + text() + ", outside " +
                              read(dCoolestMedian) + " to " + read(dHottestMedian) + ": try ";
    const std::string planck = "the camera's Planck constants";
    return nearest.name == text() ? start + planck
                                  : start + nearest.name + " (" + read(in(nearest)) + ") or " + planck;
}

} // namespace velmo::camera

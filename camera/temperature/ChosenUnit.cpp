#include "camera/temperature/ChosenUnit.h"

#include "camera/settings/Parse.h"
#include "camera/temperature/Air.h"

namespace velmo::camera {
namespace {

constexpr double dUsualSurroundings = 20;

/// The settings of the section.
class Section
{
public:
    explicit Section(const Settings& settings)
        : m_oSettings(settings), m_oDegrees(Degrees::parse(settings.text("temperature/degrees")))
    {}

    Degrees degrees() const { return m_oDegrees; }
    std::string text(const std::string& name) const { return m_oSettings.text("temperature/" + name); }
    bool given(const std::string& name) const { return text(name) != "off" && text(name) != "auto"; }

    /// One field of a setting that is given.
    std::string part(const std::string& name, std::size_t field) const
    {
        return split(text(name), ':')[field];
    }
    double number(const std::string& name) const { return m_oSettings.numbers("temperature/" + name)[0]; }

    /// One that is a temperature, in degrees Celsius.
    double celsius(const std::string& name, std::size_t field) const
    {
        return Thermometer(Scale(), m_oDegrees).celsiusOf(part(name, field), "temperature/" + name);
    }

    std::string read(double celsius) const
    {
        return degreesText(m_oDegrees.fromCelsius(celsius), 1) + " " + m_oDegrees.symbol();
    }

private:
    const Settings& m_oSettings;
    Degrees m_oDegrees;
};

std::string unitOf(const Settings& settings, const std::string& recorded)
{
    if (std::string unit = settings.text("temperature/unit"); unit != "auto")
        return unit;
    if (!recorded.empty() && recorded != "counts")
        return recorded;
    // What cannot be shown without temperatures takes the unit that is most common.
    const bool bNeeded =
        settings.text("colours/humidity") != "off" || settings.text("colours/insulation") != "off";
    return bNeeded ? "centikelvin" : "counts";
}

Radiometry::Settings surroundingsOf(const Section& section)
{
    Radiometry::Settings chosen;
    chosen.emissivity = section.number("emissivity");
    chosen.reflected = section.given("reflected") ? section.celsius("reflected", 0) : dUsualSurroundings;
    chosen.air = chosen.reflected;
    if (section.given("distance") && section.given("transmission"))
        VELMO_THROW("temperature/distance and temperature/transmission: one of them at a time");
    if (section.given("distance") && !section.given("air"))
        VELMO_THROW("temperature/distance: the way needs temperature/air T:PERCENT");
    if (section.given("air") && !section.given("distance") && !section.given("transmission"))
        VELMO_THROW("temperature/air: says nothing without temperature/distance or temperature/transmission");
    if (section.given("transmission"))
        chosen.transmission = section.number("transmission");
    if (section.given("air")) {
        const Air air = Air::parse(section.text("air"), "temperature/air", section.degrees());
        chosen.air = double{air.celsius};
        if (section.given("distance"))
            chosen.transmission =
                airTransmission(section.number("distance"), chosen.air, double{air.percent});
    }
    if (section.given("window")) {
        chosen.windowTransmission = section.number("window");
        chosen.window = section.celsius("window", 1);
    }
    return chosen;
}

std::string radiometryText(const Radiometry& radiometry, const Section& section)
{
    if (radiometry.changesNothing())
        return "";
    const Radiometry::Settings& chosen = radiometry.settings();
    std::string text = "objects of emissivity " + numberText(chosen.emissivity);
    if (chosen.emissivity < 1)
        text += " mirror " + section.read(chosen.reflected);
    if (chosen.transmission < 1)
        text += ", through air of " + section.read(chosen.air) + " that lets " +
                numberText(chosen.transmission, 3) + " through";
    if (chosen.windowTransmission < 1)
        text += ", through a window of " + section.read(chosen.window) + " that lets " +
                numberText(chosen.windowTransmission) + " through";
    return text + "; band " + radiometry.band().text();
}

Band bandOf(const Section& section, const Scale& scale)
{
    if (scale.band() && section.given("band"))
        VELMO_THROW("temperature/band: the unit has its own, " + scale.band()->text());
    return scale.band() ? *scale.band() : section.given("band") ? Band::parse(section.text("band")) : Band();
}

} // namespace

ChosenUnit::ChosenUnit(const Settings& settings, const std::string& recorded)
    : seen(Scale::parse(unitOf(settings, recorded)))
{
    const Section section(settings);
    const Radiometry chosen(surroundingsOf(section), bandOf(section, seen));
    radiometry = radiometryText(chosen, section);
    thermometer = Thermometer(chosen.changesNothing() ? seen : seen.ofObjects(chosen), section.degrees());
}

} // namespace velmo::camera

#include "apps/thermal/FilterStages.h"

#include "apps/thermal/Error.h"
#include "apps/thermal/Parse.h"

#include "vision/imgproc/TemporalNoiseReduction.h"

#include <CLI/App.hpp>

namespace thermal {
namespace {

using velmo::exp::vision::TemporalNoiseReduction;

class TemporalStage : public Stage
{
public:
    TemporalStage(int gain, int factor)
        : m_strName("temporal " + std::to_string(gain) + ":" + std::to_string(factor)),
          m_oFilter(static_cast<unsigned char>(gain), static_cast<unsigned short>(factor))
    {}

    std::string name() const override { return m_strName; }
    void apply(Frame& frame) override { m_oFilter.process(frame); }

private:
    std::string m_strName;
    TemporalNoiseReduction<unsigned short> m_oFilter;
};

/// The parts of an option that has exactly `count` of them.
std::vector<std::string> parts(const std::string& text, const std::string& option, const std::string& form)
{
    std::vector<std::string> found = split(text, ':');
    if (found.size() != split(form, ':').size())
        throw UsageError(option + ": '" + text + "' is not " + form);
    return found;
}

} // namespace

void FilterOptions::addTo(CLI::App& command)
{
    command.add_option("--temporal", temporal, "Temporal noise filter: gain 0 to 16, factor 0 to 2048")
        ->type_name("GAIN:FACTOR");
}

Chain makeChain(const FilterOptions& options)
{
    using Temporal = TemporalNoiseReduction<unsigned short>;
    Chain chain;
    if (!options.temporal.empty()) {
        const auto values = parts(options.temporal, "--temporal", "GAIN:FACTOR");
        chain.add(makeTemporal(parseInt(values[0], "--temporal gain", 0, Temporal::u8MaxControlGain),
                               parseInt(values[1], "--temporal factor", 0, Temporal::u16MaxFeedbackFactor)));
    }
    return chain;
}

std::unique_ptr<Stage> makeTemporal(int gain, int factor)
{
    return std::make_unique<TemporalStage>(gain, factor);
}

} // namespace thermal

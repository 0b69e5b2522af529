#include "camera/stages/TemporalStage.h"

#include "camera/settings/Keys.h"
#include "camera/stages/NoiseChoice.h"

#include "vision/imgproc/TemporalNoiseReduction.h"

namespace velmo::camera {
namespace {

class TemporalStage : public Stage
{
public:
    TemporalStage(const std::string& text, const std::vector<double>& numbers)
        : m_strName("temporal " + text),
          m_oFilter(static_cast<unsigned char>(numbers[0]), static_cast<unsigned short>(numbers[1]))
    {}

    std::string name() const override { return m_strName; }
    void apply(Frame& frame) override { m_oFilter.process(frame); }

private:
    std::string m_strName;
    exp::vision::TemporalNoiseReduction<unsigned short> m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makeTemporalStage(const Settings& settings)
{
    const std::string text = noiseChoice(settings, "noise/temporal", pStandardTemporal);
    if (text.empty())
        return nullptr;
    return std::make_unique<TemporalStage>(text, keyOf("noise/temporal").kind.numbers(text));
}

} // namespace velmo::camera

#include "camera/stages/TemporalStage.h"

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
    const std::string text = settings.text("noise/temporal");
    if (text == "off")
        return nullptr;
    return std::make_unique<TemporalStage>(text, settings.numbers("noise/temporal"));
}

} // namespace velmo::camera

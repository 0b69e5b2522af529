#include "camera/stages/PatternStage.h"

#include "camera/stages/SignedStage.h"

#include "vision/imgproc/StaticPatternRemover.h"

namespace velmo::camera {
namespace {

class PatternStage : public SignedStage
{
public:
    PatternStage(const std::string& text, const std::vector<double>& numbers)
        : SignedStage("pattern " + text),
          m_oFilter(static_cast<int>(numbers[0]), static_cast<int>(numbers[1]), static_cast<int>(numbers[2]))
    {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    exp::vision::StaticPatternRemover m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makePatternStage(const Settings& settings)
{
    const std::string text = settings.text("noise/pattern");
    if (text == "off")
        return nullptr;
    return std::make_unique<PatternStage>(text, settings.numbers("noise/pattern"));
}

} // namespace velmo::camera

#include "camera/stages/SpatialStage.h"

#include "camera/stages/SignedStage.h"

#include "vision/imgproc/SpatialNoiseRemover.h"

namespace velmo::camera {
namespace {

class SpatialStage : public SignedStage
{
public:
    SpatialStage(const std::string& text, const std::vector<double>& numbers)
        : SignedStage("spatial " + text), m_oFilter(static_cast<int>(numbers[0]))
    {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    exp::vision::SpatialNoiseRemover m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makeSpatialStage(const Settings& settings)
{
    const std::string text = settings.text("noise/spatial");
    if (text == "off")
        return nullptr;
    return std::make_unique<SpatialStage>(text, settings.numbers("noise/spatial"));
}

} // namespace velmo::camera

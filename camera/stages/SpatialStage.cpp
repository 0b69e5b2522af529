#include "camera/stages/SpatialStage.h"

#include "camera/stages/SignedStage.h"

#include "vision/imgproc/SpatialNoiseRemover.h"

namespace velmo::camera {
namespace {

class SpatialStage : public SignedStage
{
public:
    explicit SpatialStage(int gain) : SignedStage("spatial " + std::to_string(gain)), m_oFilter(gain) {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    exp::vision::SpatialNoiseRemover m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makeSpatialStage(int gain)
{
    return std::make_unique<SpatialStage>(gain);
}

} // namespace velmo::camera

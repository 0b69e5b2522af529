#include "camera/stages/PatternStage.h"

#include "camera/stages/SignedStage.h"

#include "vision/imgproc/StaticPatternRemover.h"

namespace velmo::camera {
namespace {

class PatternStage : public SignedStage
{
public:
    PatternStage(int threshold, int line, int pixel)
        : SignedStage("pattern " + std::to_string(threshold) + ":" + std::to_string(line) + ":" +
                      std::to_string(pixel)),
          m_oFilter(threshold, line, pixel)
    {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    exp::vision::StaticPatternRemover m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makePatternStage(int threshold, int line, int pixel)
{
    return std::make_unique<PatternStage>(threshold, line, pixel);
}

} // namespace velmo::camera

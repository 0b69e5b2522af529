#include "camera/stages/TemporalStage.h"

#include "vision/imgproc/TemporalNoiseReduction.h"

namespace velmo::camera {
namespace {

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
    exp::vision::TemporalNoiseReduction<unsigned short> m_oFilter;
};

} // namespace

std::unique_ptr<Stage> makeTemporalStage(int gain, int factor)
{
    return std::make_unique<TemporalStage>(gain, factor);
}

} // namespace velmo::camera

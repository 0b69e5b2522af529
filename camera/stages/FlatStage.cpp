#include "camera/stages/FlatStage.h"

#include "camera/settings/Parse.h"

#include "core/Clones.h"

#include <algorithm>
#include <utility>

namespace velmo::camera {
namespace {

VELMO_CLONES void correct(unsigned short* __restrict values, const float* __restrict offsets,
                          const float* __restrict gains, int count)
{
    for (int c = 0; c < count; ++c) {
        const float value = static_cast<float>(values[c]) * gains[c] + offsets[c];
        const float inside = value < 0 ? 0 : value > 65535.0F ? 65535.0F : value;
        values[c] = static_cast<unsigned short>(static_cast<int>(inside + 0.5F));
    }
}

class FlatStage : public Stage
{
public:
    FlatStage(const FlatField& field, std::string origin)
        : m_strOrigin(std::move(origin)), m_oGains(field.gains.clone()),
          m_oOffsets(field.level() - field.shutter.mul(field.gains))
    {}

    std::string name() const override { return "flat field"; }

    void apply(Frame& frame) override
    {
        if (frame.size() != m_oGains.size())
            VELMO_THROW(m_strOrigin + ": a flat field of " + sizeText(m_oGains.size()) + " for frames of " +
                        sizeText(frame.size()));
        for (int r = 0; r < frame.rows; ++r)
            correct(frame[r], m_oOffsets[r], m_oGains[r], frame.cols);
    }

private:
    std::string m_strOrigin;
    cv::Mat_<float> m_oGains;
    cv::Mat_<float> m_oOffsets; ///< behind the gains
};

} // namespace

std::unique_ptr<Stage> makeFlatStage(const Calibration& calibration)
{
    if (calibration.flat.empty())
        return nullptr;
    return std::make_unique<FlatStage>(calibration.flat, calibration.flatOrigin);
}

} // namespace velmo::camera

#include "camera/stages/DenoiseStage.h"

#include "camera/stages/Denoiser.h"

namespace velmo::camera {
namespace {

DenoiseStrength strengthOf(const std::string& word)
{
    if (word == "light")
        return {0.14F, 0.75F};
    if (word == "strong")
        return {0.035F, 1.25F};
    return {0.07F, 1};
}

class DenoiseStage : public Stage
{
public:
    explicit DenoiseStage(const std::string& word)
        : m_strName("denoise " + word), m_oDenoiser(strengthOf(word))
    {}

    std::string name() const override { return m_strName; }
    void apply(Frame& frame) override { m_oDenoiser.process(frame, frame); }

private:
    std::string m_strName;
    Denoiser m_oDenoiser;
};

} // namespace

std::unique_ptr<Stage> makeDenoiseStage(const Settings& settings)
{
    const std::string word = settings.text("noise/denoise");
    return word == "off" ? nullptr : std::make_unique<DenoiseStage>(word);
}

} // namespace velmo::camera

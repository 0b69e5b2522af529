#include "camera/measures/Judgement.h"

namespace velmo::camera {

Judgement judge(const FilterMaker& make, const std::vector<Frame>& frames, std::size_t skip)
{
    Judgement judgement;
    static_cast<TrialFigures&>(judgement) = trialsOf(make, frames, skip);
    NoiseMeter noise;
    FidelityMeter fidelity;
    const std::vector<Frame> results = filtered(make, frames);
    for (std::size_t i = skip; i < frames.size(); ++i) {
        noise.add(results[i]);
        fidelity.add(frames[i], results[i]);
    }
    static_cast<NoiseFigures&>(judgement) = noise.figures();
    static_cast<FidelityFigures&>(judgement) = fidelity.figures();
    return judgement;
}

} // namespace velmo::camera

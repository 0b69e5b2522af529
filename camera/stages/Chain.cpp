#include "camera/stages/Chain.h"

#include "camera/stages/BadPixelStage.h"
#include "camera/stages/DenoiseStage.h"
#include "camera/stages/DownSizeStage.h"
#include "camera/stages/FlatStage.h"
#include "camera/stages/PatternStage.h"
#include "camera/stages/SpatialStage.h"
#include "camera/stages/TemporalStage.h"

#include <chrono>
#include <utility>

namespace velmo::camera {

Chain::Chain(const Settings& settings, const Calibration& calibration)
{
    add(makeFlatStage(calibration));
    add(makeBadPixelStage(settings, calibration));
    add(makePatternStage(settings));
    add(makeTemporalStage(settings));
    add(makeSpatialStage(settings));
    add(makeDenoiseStage(settings));
    add(makeDownSizeStage(settings));
}

void Chain::add(std::unique_ptr<Stage> stage)
{
    if (!stage)
        return;
    Link link;
    link.m_pStage = std::move(stage);
    m_vecLinks.push_back(std::move(link));
}

void Chain::apply(Frame& frame, const Watcher& watcher)
{
    for (std::size_t i = 0; i < m_vecLinks.size(); ++i) {
        Link& link = m_vecLinks[i];
        const auto begin = std::chrono::steady_clock::now();
        link.m_pStage->apply(frame);
        const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - begin;
        link.m_dMicroseconds += taken.count();
        ++link.m_nFrames;
        if (watcher)
            watcher(i, frame);
    }
}

double Chain::microseconds(std::size_t index) const
{
    const Link& link = m_vecLinks[index];
    return link.m_nFrames == 0 ? 0 : link.m_dMicroseconds / static_cast<double>(link.m_nFrames);
}

} // namespace velmo::camera

#pragma once

#include "camera/Calibration.h"
#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include "core/Export.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmo::camera {

/// Stages in the order in which a frame passes them, with the time that each takes.
class VELMO_API Chain
{
public:
    /// Called after each stage with its place in the chain and the frame as it left it.
    using Watcher = std::function<void(std::size_t, const Frame&)>;

    Chain() = default;

    /// What the settings ask for and the calibration knows, in the order in which it builds on each other.
    explicit Chain(const Settings& settings, const Calibration& calibration = {});

    /// Behind what is in the chain already; nothing is added if there is no stage.
    void add(std::unique_ptr<Stage> stage);

    void apply(Frame& frame, const Watcher& watcher = {});

    std::size_t size() const { return m_vecLinks.size(); }
    std::string name(std::size_t index) const { return m_vecLinks[index].m_pStage->name(); }

    /// Mean time per frame so far.
    double microseconds(std::size_t index) const;

private:
    struct Link
    {
        std::unique_ptr<Stage> m_pStage;
        double m_dMicroseconds = 0;
        std::size_t m_nFrames = 0;
    };
    std::vector<Link> m_vecLinks;
};

} // namespace velmo::camera

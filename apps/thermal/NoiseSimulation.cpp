#include "apps/thermal/NoiseTables.h"
#include "apps/thermal/Progress.h"
#include "camera/measures/Peers.h"
#include "camera/measures/Simulation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace thermal {

using namespace velmo::camera;

namespace {

constexpr int s32Frames = 60;
constexpr int s32From = 10;  ///< the first frame that is judged
constexpr int s32Every = 25; ///< of those of filters without memory, which are slow
const cv::Size largest(160, 120);

struct Best
{
    std::string name;
    double error = std::numeric_limits<double>::infinity();
};

/// Of all peers with all their settings, which are told how large the noise is.
Best bestPeer(const Simulation& simulation, const SensorNoise& noise)
{
    const double stripes = noise.stripes * noise.stripes;
    const double all = noise.deviation * std::sqrt(1 + noise.pattern * noise.pattern + 2.44 * stripes);
    Best best;
    for (const Peer& peer : peers(all))
        for (const FilterMaker& make : peer.settings) {
            const TruthFigures figures = peer.remembers ? simulation.after(make, s32From)
                                                        : simulation.afterEach(make, s32From + 5, s32Every);
            if (figures.error < best.error)
                best = {peer.name, figures.error};
        }
    return best;
}

std::vector<SimulatedScene> scenes(const Frame& picture, cv::Size& size)
{
    size = largest;
    if (picture.empty())
        return simulatedScenes(size);
    size = {std::min(size.width, picture.cols), std::min(size.height, picture.rows)};
    return scenesOf(picture, size);
}

} // namespace

Table simulated(const FilterMaker& make, const Frame& picture, bool anchors, bool quiet)
{
    constexpr double noises[] = {0.7, 2, 7, 30};
    std::vector<Table::Column> headings{{"scene", "scene"},
                                        {"noise", "noise", 1},
                                        {"kind", "kind"},
                                        {"error before", "before", 2},
                                        {"after", "after", 2},
                                        {"after/before", "ratio", 2},
                                        {"in the first frame", "first", 2},
                                        {"bias", "bias", 2}};
    if (anchors)
        headings.insert(
            headings.end(),
            {{"best peer", "peer"}, {"its after", "peer_after", 2}, {"after/its", "peer_ratio", 2}});
    Table table(headings);
    cv::Size size;
    const std::vector<SimulatedScene> all = scenes(picture, size);
    Progress progress("simulating", all.size() * 16, quiet);
    for (const SimulatedScene& scene : all)
        for (const double deviation : noises)
            for (const auto& [slow, fixed] :
                 {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
                const SensorNoise noise{deviation, slow, fixed ? 0.4 : 0.0, fixed ? 0.7 : 0.0};
                const Simulation simulation(scene, noise, size, s32Frames);
                const TruthFigures raw = simulation.raw(s32From);
                const TruthFigures after = simulation.after(make, s32From);
                const double first =
                    simulation.afterEach(make, 0, s32Frames).error / simulation.raw(0, s32Frames).error;
                std::vector<Table::Cell> row{scene.name,
                                             deviation,
                                             std::string(slow ? "slow" : "white") +
                                                 (fixed ? ", stripes" : ""),
                                             raw.error,
                                             after.error,
                                             after.error / raw.error,
                                             first,
                                             after.bias - raw.bias};
                if (anchors) {
                    const Best best = bestPeer(simulation, noise);
                    row.insert(row.end(), {best.name, best.error, after.error / best.error});
                }
                table.add(std::move(row));
                progress.step();
            }
    return table;
}

} // namespace thermal

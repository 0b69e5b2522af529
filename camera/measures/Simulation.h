#pragma once

#include "camera/measures/Filter.h"
#include "camera/measures/SimulatedScenes.h"
#include "camera/measures/SimulatedSensor.h"

#include "core/Export.h"

namespace velmo::camera {

/// How far frames are from the truth, in counts.
struct TruthFigures
{
    double error = 0; ///< root mean square
    double bias = 0;  ///< mean
};

/// A stream of which the truth is known.
class VELMO_API Simulation
{
public:
    Simulation(SimulatedScene scene, const SensorNoise& noise, cv::Size size, int frames, unsigned seed = 11);

    /// Of the frames as they are.
    TruthFigures raw(int from, int every = 1) const;

    /// Of the filtered frames.
    /// @param make   the filter
    /// @param from   the first frame that is judged; earlier ones are for the filter to learn
    /// @param every  of how many frames one is judged
    TruthFigures after(const FilterMaker& make, int from, int every = 1) const;

    /// The same, of a filter that does not remember frames, which so passes only those that are judged.
    TruthFigures afterEach(const FilterMaker& make, int from, int every) const;

    const std::vector<Frame>& frames() const { return m_vecFrames; }

private:
    SimulatedScene m_oScene;
    std::vector<Frame> m_vecFrames;
};

} // namespace velmo::camera

#include "camera/measures/Simulation.h"

#include <cmath>

namespace velmo::camera {
namespace {

class Sum
{
public:
    void add(const Frame& frame, const cv::Mat_<float>& truth)
    {
        cv::Mat_<float> error;
        cv::subtract(frame, truth, error, cv::noArray(), CV_32F);
        m_dSquares += cv::mean(error.mul(error))[0];
        m_dSum += cv::mean(error)[0];
        ++m_s32Count;
    }

    TruthFigures figures() const { return {std::sqrt(m_dSquares / m_s32Count), m_dSum / m_s32Count}; }

private:
    double m_dSquares = 0;
    double m_dSum = 0;
    int m_s32Count = 0;
};

} // namespace

Simulation::Simulation(SimulatedScene scene, const SensorNoise& noise, cv::Size size, int frames,
                       unsigned seed)
    : m_oScene(std::move(scene))
{
    SimulatedSensor sensor(noise, size, seed);
    for (int time = 0; time < frames; ++time)
        m_vecFrames.push_back(sensor.expose(m_oScene.at(time)));
}

TruthFigures Simulation::raw(int from, int every) const
{
    return afterEach([] { return [](Frame&) {}; }, from, every);
}

TruthFigures Simulation::after(const FilterMaker& make, int from, int every) const
{
    const std::vector<Frame> results = filtered(make, m_vecFrames);
    Sum sum;
    for (std::size_t time = static_cast<std::size_t>(from); time < results.size();
         time += static_cast<std::size_t>(every))
        sum.add(results[time], m_oScene.at(static_cast<int>(time)));
    return sum.figures();
}

TruthFigures Simulation::afterEach(const FilterMaker& make, int from, int every) const
{
    const Filter filter = make();
    Sum sum;
    for (std::size_t time = static_cast<std::size_t>(from); time < m_vecFrames.size();
         time += static_cast<std::size_t>(every)) {
        Frame frame = m_vecFrames[time].clone();
        filter(frame);
        sum.add(frame, m_oScene.at(static_cast<int>(time)));
    }
    return sum.figures();
}

} // namespace velmo::camera

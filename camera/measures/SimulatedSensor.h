#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::camera {

/// What a sensor adds to the scene, in counts and in shares of its noise.
struct SensorNoise
{
    double deviation = 2; ///< of a pixel in time
    bool slow = false;    ///< most of it stays for ten frames, as that of uncooled sensors; otherwise white
    double stripes = 0;   ///< of columns, that change; those of rows are 0.75 of them, as are those that stay
    double pattern = 0;   ///< per pixel, stays
};

/// Takes pictures of scenes that are known.
class VELMO_API SimulatedSensor
{
public:
    /// @param noise  in counts
    /// @param size   of its frames
    /// @param seed   the same one gives the same noise
    SimulatedSensor(const SensorNoise& noise, cv::Size size, unsigned seed = 11);

    /// The next frame of the stream.
    /// @param scene  of the sensor's size
    Frame expose(const cv::Mat_<float>& scene);

private:
    /// A number per element, which forgets what it was over some frames.
    struct Wander
    {
        float kept = 0; ///< share of it from frame to frame
        cv::Mat_<float> values;
    };

    cv::Mat_<float> normal(cv::Size size);
    const cv::Mat_<float>& moved(Wander& wander);

    SensorNoise m_oNoise;
    cv::Size m_oSize;
    cv::RNG m_oRandom;
    Wander m_oSlow, m_oSlower, m_oColumns, m_oRows;
    cv::Mat_<float> m_oPattern, m_oFixedColumns, m_oFixedRows;
};

} // namespace velmo::camera

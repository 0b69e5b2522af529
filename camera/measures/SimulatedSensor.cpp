#include "camera/measures/SimulatedSensor.h"

#include <cmath>

namespace velmo::camera {

SimulatedSensor::SimulatedSensor(const SensorNoise& noise, cv::Size size, unsigned seed)
    : m_oNoise(noise), m_oSize(size),
      m_oRandom(seed), m_oSlow{0.513F, normal(size)}, m_oSlower{0.905F, normal(size)},
      m_oColumns{0.9F, normal({size.width, 1})}, m_oRows{0.9F, normal({1, size.height})},
      m_oPattern(normal(size)), m_oFixedColumns(normal({size.width, 1})),
      m_oFixedRows(normal({1, size.height}))
{}

cv::Mat_<float> SimulatedSensor::normal(cv::Size size)
{
    cv::Mat_<float> values(size);
    m_oRandom.fill(values, cv::RNG::NORMAL, 0, 1);
    return values;
}

const cv::Mat_<float>& SimulatedSensor::moved(Wander& wander)
{
    wander.values =
        wander.kept * wander.values + std::sqrt(1 - wander.kept * wander.kept) * normal(wander.values.size());
    return wander.values;
}

Frame SimulatedSensor::expose(const cv::Mat_<float>& scene)
{
    // Shares of the variance that forget at once, over 1.5 frames and over 10: differences of a pixel at lags
    // of 1 to 16 frames grow as those of uncooled sensors do.
    constexpr double dWhite = 0.012, dSlow = 0.05, dSlower = 0.938;
    constexpr double dRows = 0.75, dFixed = 0.75;
    cv::Mat_<float> added = normal(m_oSize);
    if (m_oNoise.slow)
        added = std::sqrt(dWhite) * added + std::sqrt(dSlow) * moved(m_oSlow) +
                std::sqrt(dSlower) * moved(m_oSlower);
    added += m_oNoise.pattern * m_oPattern;
    const cv::Mat_<float> columns = moved(m_oColumns) + dFixed * m_oFixedColumns,
                          rows = moved(m_oRows) + dFixed * m_oFixedRows;
    added += m_oNoise.stripes *
             (cv::repeat(columns, m_oSize.height, 1) + dRows * cv::repeat(rows, 1, m_oSize.width));
    Frame frame;
    cv::Mat(scene + m_oNoise.deviation * added).convertTo(frame, CV_16U);
    return frame;
}

} // namespace velmo::camera

#pragma once

#include "apps/thermal/Table.h"
#include "camera/Frame.h"
#include "camera/measures/Judgement.h"
#include "camera/temperature/Thermometer.h"

#include <string>
#include <utility>
#include <vector>

namespace thermal {

/// Noise in what people read: counts or degrees.
class NoiseReading
{
public:
    explicit NoiseReading(velmo::camera::Thermometer thermometer) : m_oThermometer(std::move(thermometer)) {}

    /// Noise is turned into degrees by what a count is around the middle of a frame.
    void lookAt(const velmo::camera::Frame& frame);

    /// "counts" or "°C"
    std::string unit() const;
    /// At the end of the keys of figures that have a unit.
    std::string key() const { return m_oThermometer.key(); }
    bool inDegrees() const { return m_oThermometer.hasDegrees(); }
    int decimals() const { return inDegrees() ? 3 : 2; }

    double value(double counts) const;
    double difference(double counts) const;

private:
    velmo::camera::Thermometer m_oThermometer;
    unsigned short m_u16Around = 0;
};

/// The figures of one recording.
Table measured(const velmo::camera::NoiseFigures& figures, const NoiseReading& reading);

/// A recording, and what filters make of it. A ratio stands where there are two of them.
struct Judged
{
    std::string name;
    velmo::camera::Judgement figures;
};
Table compared(const std::vector<Judged>& columns, const NoiseReading& reading);

/// What filters are to scenes of which the truth is known.
/// @param make     the filter
/// @param picture  taken for a scene, too; may be empty
/// @param anchors  whether peers are run as well
Table simulated(const velmo::camera::FilterMaker& make, const velmo::camera::Frame& picture, bool anchors,
                bool quiet);

} // namespace thermal

#pragma once

#include "camera/Frame.h"
#include "camera/measures/Shape.h"
#include "camera/measures/ValueCounts.h"
#include "camera/temperature/Thermometer.h"
#include "core/Exception.h"
#include "core/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmo::camera {

/// What is measured of the pixels of a shape in one frame. Numbers are as the thermometer reads them; that of
/// a value without a temperature is fBelow or fAbove.
struct Figures
{
    std::size_t pixels = 0;
    std::size_t without = 0; ///< of them without a temperature: neither in the mean nor in the deviation
    double low = 0;
    cv::Point lowAt; ///< the first pixel of this value, row by row
    double mean = 0; ///< fBelow if no pixel has a temperature
    double high = 0;
    cv::Point highAt;
    double deviation = 0; ///< root of the mean square distance from the mean; NaN without temperatures
    double p5 = 0;        ///< percentiles; between two pixels in proportion
    double p50 = 0;
    double p95 = 0;
};

/// One step of a histogram.
struct HistogramBin
{
    double from;
    double to; ///< not included but in the last bin
    std::uint64_t pixels;
};

/// Equal steps from the least to the greatest number that is read; what has no temperature is in none.
///
/// @param bins  1 or more; if all numbers are equal, one bin holds them
VELMO_API std::vector<HistogramBin> histogramOf(const ValueCounts& counts, const Thermometer& thermometer,
                                                int bins);

/// Measures shapes in frame after frame of a stream.
class VELMO_API ShapeMeter
{
public:
    /// A shape with the name that it got.
    struct Entry
    {
        std::string name;
        Shape shape;
        std::vector<Run> runs; ///< its pixels, once there was a frame
        Figures figures;       ///< of the last frame
    };

    /// The mean of one shape less that of another.
    struct Delta
    {
        std::string name;
        std::size_t left; ///< places among the entries
        std::size_t right;
        double difference; ///< in the last frame; NaN if one of the means is no number
    };

    /// @param thermometer  from values to temperatures
    /// @param keepsCounts  whether counts() are wanted
    explicit ShapeMeter(Thermometer thermometer, bool keepsCounts = false)
        : m_oThermometer(std::move(thermometer)), m_bKeepsCounts(keepsCounts)
    {}

    /// Names it by its kind and number: "spot1", "spot2", "box1"; the whole frame is "whole".
    void add(Shape shape);

    /// @param text  "box1-box2"
    /// @throws Exception  that names the text and the names there are
    void addDelta(const std::string& text);

    /// @throws Exception  if a shape leaves the frame; nothing is measured then
    void measure(const Frame& frame);

    const std::vector<Entry>& entries() const { return m_vecEntries; }
    const std::vector<Delta>& deltas() const { return m_vecDeltas; }
    const Thermometer& thermometer() const { return m_oThermometer; }

    /// Those of each entry in all frames so far; empty if they are not kept.
    const std::vector<ValueCounts>& counts() const { return m_vecCounts; }

private:
    void place(cv::Size size);
    std::size_t find(const std::string& name) const;

    Thermometer m_oThermometer;
    std::vector<Entry> m_vecEntries;
    std::vector<Delta> m_vecDeltas;
    cv::Size m_oSize; ///< that the runs are of
    ValueCounts m_oScratch;
    bool m_bKeepsCounts;
    std::vector<ValueCounts> m_vecCounts;
};

} // namespace velmo::camera

#pragma once

#include "camera/Frame.h"
#include "camera/pixels/PixelMap.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/BadPixel.h"

#include <cstddef>
#include <string>

namespace velmo::camera {

/// Looks for bad pixels in a recording, frame by frame.
class VELMO_API PixelDetection
{
public:
    /// @param minCount  of a populated bin of the histogram; 0 leaves this detector out
    /// @param monotony  the recording is a series at rising temperature
    /// @param offset    taken off every value: what is left makes the bins, 2 % of its mean
    PixelDetection(std::size_t minCount, bool monotony, int offset = 0)
        : m_nMinCount(minCount), m_bMonotony(monotony), m_s32Offset(offset)
    {}

    /// @throws Exception  if the frame has another size than the ones before, or values that leave 16 bits
    ///                     with a sign
    void add(const Frame& frame);

    std::size_t frames() const { return m_nFrames; }
    const Frame& first() const { return m_oFirst; }

    /// What was found: by the spread in every frame alike, as things in the scene are odd in some only, and
    /// by the monotony from any frame to the next.
    PixelMap map() const { return m_oSpread | m_oMonotony; }

private:
    std::size_t m_nMinCount;
    bool m_bMonotony;
    int m_s32Offset;
    std::size_t m_nFrames = 0;
    Frame m_oFirst;
    cv::Mat_<short> m_oPrevious;
    PixelMap m_oSpread;
    PixelMap m_oMonotony;
};

/// Mean and noise of each pixel of a recording of something that stands still.
class VELMO_API StillSeries
{
public:
    /// Noise is counted in sixteenths of a digit, as it is often less than one.
    static constexpr int s32NoiseSteps = 16;

    void add(const Frame& frame);

    std::size_t frames() const { return m_nFrames; }
    cv::Size size() const { return m_oSum.size(); }
    cv::Mat_<short> mean() const;

    /// The variance in time of each pixel.
    cv::Mat_<double> variance() const;

private:
    std::size_t m_nFrames = 0;
    cv::Mat_<double> m_oSum;
    cv::Mat_<double> m_oSquares;
};

/// How far from the means a pixel may be.
struct NetdTolerances
{
    double responsivity = 0.5;
    double noise = 1;
    double netd = 1;
};

using NetdResults = exp::vision::BadPixelTools::NetdCheckResults;

/// Compares two series at the temperatures `cold` and `warm`; flags in `map`. Figures in digits.
VELMO_API NetdResults checkNetd(const StillSeries& first, double firstTemperature, const StillSeries& second,
                                double secondTemperature, const NetdTolerances& tolerances, PixelMap& map);

} // namespace velmo::camera

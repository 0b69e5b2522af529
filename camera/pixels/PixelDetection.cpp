#include "camera/pixels/PixelDetection.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"

#include <algorithm>

namespace velmo::camera {
namespace {

using exp::vision::BadPixelTools;

void requireSize(cv::Size size, cv::Size expected)
{
    if (size != expected)
        VELMO_THROW("a frame of " + sizeText(size) + " among frames of " + sizeText(expected));
}

/// What the detectors take: 16 bits with a sign.
cv::Mat_<short> asSigned(const Frame& frame, int offset = 0)
{
    double least = 0, greatest = 0;
    cv::minMaxLoc(frame, &least, &greatest);
    for (const double value : {least - offset, greatest - offset})
        if (value < -32768 || value > 32767)
            VELMO_THROW("a frame with values from " + std::to_string(static_cast<int>(least)) + " to " +
                        std::to_string(static_cast<int>(greatest)) +
                        ": less the offset that is more than the detectors take, -32768 to 32767");
    cv::Mat_<short> values;
    frame.convertTo(values, CV_16S, 1, -offset);
    return values;
}

} // namespace

void PixelDetection::add(const Frame& frame)
{
    const cv::Mat_<short> values = asSigned(frame, m_s32Offset);
    if (m_nFrames == 0) {
        m_oFirst = frame.clone();
        m_oSpread = PixelMap(frame.size(), 0);
        m_oMonotony = PixelMap(frame.size(), 0);
    }
    requireSize(frame.size(), m_oFirst.size());
    if (m_nMinCount > 0) {
        PixelMap found(frame.size(), 0);
        BadPixelTools::detectBadPixelHistogram(values, found, m_nMinCount);
        m_oSpread = m_nFrames == 0 ? found : PixelMap(m_oSpread & found);
    }
    if (m_bMonotony && m_nFrames > 0)
        BadPixelTools::checkMonotonic({m_oPrevious, values}, m_oMonotony);
    m_oPrevious = values;
    ++m_nFrames;
}

void StillSeries::add(const Frame& frame)
{
    cv::Mat_<double> values;
    asSigned(frame).convertTo(values, CV_64F);
    if (m_nFrames == 0) {
        m_oSum = cv::Mat_<double>::zeros(frame.size());
        m_oSquares = m_oSum.clone();
    }
    requireSize(frame.size(), m_oSum.size());
    m_oSum += values;
    m_oSquares += values.mul(values);
    ++m_nFrames;
}

cv::Mat_<short> StillSeries::mean() const
{
    cv::Mat_<short> mean;
    m_oSum.convertTo(mean, CV_16S, 1.0 / static_cast<double>(m_nFrames));
    return mean;
}

cv::Mat_<double> StillSeries::variance() const
{
    const auto count = static_cast<double>(m_nFrames);
    return cv::max((m_oSquares - m_oSum.mul(m_oSum) / count) / (count - 1), 0);
}

NetdResults checkNetd(const StillSeries& first, double firstTemperature, const StillSeries& second,
                      double secondTemperature, const NetdTolerances& tolerances, PixelMap& map)
{
    for (const StillSeries* series : {&first, &second}) {
        requireSize(series->size(), map.size());
        if (series->frames() < 2)
            VELMO_THROW("noise needs at least two frames at each temperature");
    }
    cv::Mat_<double> deviation;
    cv::sqrt((first.variance() + second.variance()) / 2, deviation);
    cv::Mat_<short> noise;
    deviation.convertTo(noise, CV_16S, StillSeries::s32NoiseSteps);
    NetdResults results =
        BadPixelTools::checkNetd(first.mean(), second.mean(), noise, map, firstTemperature, secondTemperature,
                                 tolerances.responsivity, tolerances.noise, tolerances.netd);
    results.dMeanNoise /= StillSeries::s32NoiseSteps;
    results.dMeanNetd /= StillSeries::s32NoiseSteps;
    return results;
}

} // namespace velmo::camera

// The four detectors.

#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"
#include "vision/kernels/BadPixelKernel.h"

#include <cmath>

namespace velmo::exp::vision {
namespace {

/// The three tolerances of a NETD measurement around its means.
struct NetdLimits
{
    NetdLimits(const BadPixelTools::NetdCheckResults& means, double factorResponsivity, double factorNoise,
               double factorNetd)
        : responsivity(std::abs(factorResponsivity * means.dMeanResponsivity)),
          noise(std::abs(factorNoise * means.dMeanNoise)), netd(std::abs(factorNetd * means.dMeanNetd))
    {}

    double responsivity, noise, netd;
};

/// The frames of a NETD measurement, pixel by pixel.
struct NetdMeasurement
{
    const cv::Mat_<short>& frame1;
    const cv::Mat_<short>& frame2;
    const cv::Mat_<short>& noise;
    double rise;

    bool answers(int r, int c) const { return frame1(r, c) != frame2(r, c); }

    double responsivity(int r, int c) const
    {
        // Never 0: different readings differ at 16 bits too.
        return static_cast<short>(frame2(r, c) - frame1(r, c)) / rise;
    }

    double netd(int r, int c) const { return noise(r, c) / responsivity(r, c); }
};

/// First pass: means over the good pixels; those that do not answer at all are flagged.
BadPixelTools::NetdCheckResults measureNetd(const NetdMeasurement& measurement, cv::Mat_<int>& map)
{
    BadPixelTools::NetdCheckResults sums;
    unsigned int count = 0;
    for (int r = 0; r < map.rows; ++r)
        for (int c = 0; c < map.cols; ++c) {
            if (map(r, c) != 0)
                continue;
            if (!measurement.answers(r, c)) {
                map(r, c) = static_cast<int>(BadPixelTools::u32BadNetd);
                sums.bBadPixelsFound = true;
                continue;
            }
            sums.dMeanResponsivity += measurement.responsivity(r, c);
            sums.dMeanNoise += measurement.noise(r, c);
            sums.dMeanNetd += measurement.netd(r, c);
            ++count;
        }
    // 0 / 0 without a pixel: not a number, and nothing is farther from it than any limit.
    sums.dMeanResponsivity /= count;
    sums.dMeanNoise /= count;
    sums.dMeanNetd /= count;
    return sums;
}

bool isBadNetd(const NetdMeasurement& measurement, const BadPixelTools::NetdCheckResults& means,
               const NetdLimits& limits, bool measured, int r, int c)
{
    if (measured && std::abs(measurement.responsivity(r, c) - means.dMeanResponsivity) > limits.responsivity)
        return true;
    if (std::abs(measurement.noise(r, c) - means.dMeanNoise) > limits.noise)
        return true;
    return measured && std::abs(measurement.netd(r, c) - means.dMeanNetd) > limits.netd;
}

} // namespace

unsigned long BadPixelTools::detectBadPixelHistogram(const cv::Mat_<short>& frame, cv::Mat_<int>& map,
                                                     unsigned long u64MinCount)
{
    if (map.size() != frame.size())
        map = cv::Mat_<int>(frame.size(), 0);
    return flagSpread(frame, map, u64MinCount);
}

void BadPixelTools::detectBadRowsAndColumns(cv::Mat_<int>& map, unsigned int u32MaxBadPerColumn,
                                            unsigned int u32MaxBadPerRow)
{
    const auto flag = static_cast<int>(u32BadRowCol);
    std::vector<unsigned int> perColumn(static_cast<std::size_t>(map.cols));
    // A row's own flag does not matter any more once the row has been counted.
    for (int r = 0; r < map.rows; ++r)
        if (countBad(map[r], perColumn.data(), map.cols) > u32MaxBadPerRow)
            for (int c = 0; c < map.cols; ++c)
                map(r, c) |= flag;
    for (int c = 0; c < map.cols; ++c)
        if (perColumn[static_cast<std::size_t>(c)] > u32MaxBadPerColumn)
            for (int r = 0; r < map.rows; ++r)
                map(r, c) |= flag;
}

void BadPixelTools::checkMonotonic(const std::vector<cv::Mat_<short>>& frames, cv::Mat_<int>& map)
{
    if (frames.size() < 2)
        VELMO_THROW("Need at least 2 frames to check monotony!");
    if (map.size() != frames.front().size())
        VELMO_THROW("Size of matBadPixel does not fit to the frames!");
    for (const auto& frame : frames)
        if (frame.size() != map.size())
            VELMO_THROW("Frame of " + std::to_string(frame.cols) + " x " + std::to_string(frame.rows) +
                        " in a series of " + std::to_string(map.cols) + " x " + std::to_string(map.rows) +
                        "!");
    for (int r = 0; r < map.rows; ++r)
        for (std::size_t k = 1; k < frames.size(); ++k)
            flagFallen(frames[k - 1][r], frames[k][r], map[r], map.cols);
}

BadPixelTools::NetdCheckResults
BadPixelTools::checkNetd(const cv::Mat_<short>& frame1, const cv::Mat_<short>& frame2,
                         const cv::Mat_<short>& noise, cv::Mat_<int>& map, double dTemp1, double dTemp2,
                         double dFactorResponsivity, double dFactorNoise, double dFactorNetd)
{
    if (frame1.size() != frame2.size() || frame1.size() != map.size() || frame1.size() != noise.size())
        VELMO_THROW("NETD input frames must have same size!");
    if (dTemp1 == dTemp2)
        VELMO_THROW("NETD compare temperatures must be diffrent!");
    const NetdMeasurement measurement{frame1, frame2, noise, dTemp2 - dTemp1};
    NetdCheckResults results = measureNetd(measurement, map);
    const NetdLimits limits(results, dFactorResponsivity, dFactorNoise, dFactorNetd);
    for (int r = 0; r < map.rows; ++r)
        for (int c = 0; c < map.cols; ++c) {
            // The first pass left 0 exactly where it measured.
            const bool measured = map(r, c) == 0;
            if (isBadNetd(measurement, results, limits, measured, r, c)) {
                map(r, c) |= static_cast<int>(u32BadNetd);
                results.bBadPixelsFound = true;
            }
        }
    return results;
}

} // namespace velmo::exp::vision

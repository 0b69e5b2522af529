#include "camera/measures/Fidelity.h"

#include "camera/measures/Statistics.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmo::camera {
namespace {

constexpr double dSteepest = 0.98;    ///< edges: steeper than this share of the pixels
constexpr double dFarBeyondNoise = 8; ///< of the deviation of the frame's own differences
constexpr double dLeastChange = 12;   ///< counts: below that, coarse values look like movement

cv::Mat_<double> slopeOf(const cv::Mat_<double>& mean)
{
    cv::Mat_<double> right;
    cv::Mat_<double> down;
    cv::Sobel(mean, right, CV_64F, 1, 0);
    cv::Sobel(mean, down, CV_64F, 0, 1);
    cv::Mat_<double> slope;
    cv::magnitude(right, down, slope);
    return slope;
}

} // namespace

void FidelityMeter::add(const Frame& before, const Frame& after)
{
    cv::Mat_<float> raw;
    before.convertTo(raw, CV_32F);
    if (m_nFrames++ == 0) {
        m_oSumBefore = cv::Mat_<double>::zeros(before.size());
        m_oSumAfter = cv::Mat_<double>::zeros(before.size());
    } else {
        const cv::Mat_<double> change = cv::Mat_<double>(cv::abs(raw - m_oPrevious));
        const double least = std::max(dLeastChange, dFarBeyondNoise * medianOf(change));
        for (int r = 0; r < raw.rows; ++r)
            for (int c = 0; c < raw.cols; ++c)
                if (change(r, c) >= least) {
                    m_dMissed += std::abs(static_cast<double>(after(r, c)) - raw(r, c));
                    m_dChanged += change(r, c);
                }
    }
    cv::accumulate(before, m_oSumBefore);
    cv::accumulate(after, m_oSumAfter);
    m_oPrevious = raw;
}

FidelityFigures FidelityMeter::figures() const
{
    constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
    FidelityFigures figures = {dNone, dNone};
    if (m_nFrames == 0)
        return figures;
    const cv::Mat_<double> before = slopeOf(m_oSumBefore);
    const cv::Mat_<double> after = slopeOf(m_oSumAfter);
    const cv::Mat steepest = before >= quantileOf(before, dSteepest);
    const double slope = cv::mean(before, steepest)[0];
    if (slope > 0)
        figures.edges = cv::mean(after, steepest)[0] / slope;
    if (m_dChanged > 0)
        figures.ghosting = m_dMissed / m_dChanged;
    return figures;
}

} // namespace velmo::camera

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

struct Gradient
{
    explicit Gradient(const cv::Mat_<double>& mean)
    {
        cv::Sobel(mean, right, CV_64F, 1, 0);
        cv::Sobel(mean, down, CV_64F, 0, 1);
    }

    cv::Mat_<double> squared() const { return right.mul(right) + down.mul(down); }

    cv::Mat_<double> right, down;
};

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
    m_vecBiases.push_back(cv::mean(after)[0] - cv::mean(before)[0]);
    m_oPrevious = raw;
}

FidelityFigures FidelityMeter::figures() const
{
    constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
    FidelityFigures figures = {dNone, dNone, dNone, dNone};
    if (m_nFrames == 0)
        return figures;
    const Gradient before(m_oSumBefore), after(m_oSumAfter);
    const cv::Mat_<double> slope = before.squared();
    const cv::Mat steepest = slope >= quantileOf(slope, dSteepest);
    const cv::Mat_<double> along = before.right.mul(after.right) + before.down.mul(after.down);
    if (const double steepness = cv::mean(slope, steepest)[0]; steepness > 0)
        figures.edges = cv::mean(along, steepest)[0] / steepness;
    if (m_dChanged > 0)
        figures.ghosting = m_dMissed / m_dChanged;
    const cv::Mat_<double> biases(m_vecBiases);
    figures.bias = cv::mean(biases)[0];
    figures.biasOfMost = quantileOf(cv::Mat_<double>(cv::abs(biases)), 0.95);
    return figures;
}

} // namespace velmo::camera

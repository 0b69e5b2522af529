#include "camera/measures/Deviation.h"

#include "camera/measures/Statistics.h"

#include <limits>

namespace velmo::camera {

void Deviation::add(const cv::Mat_<double>& values)
{
    if (m_nCount++ == 0) {
        m_oSum = cv::Mat_<double>::zeros(values.size());
        m_oSquares = cv::Mat_<double>::zeros(values.size());
    }
    m_oSum += values;
    m_oSquares += values.mul(values);
}

cv::Mat_<double> Deviation::values() const
{
    if (m_nCount < 2)
        return {m_oSum.size(), std::numeric_limits<double>::quiet_NaN()};
    const double n = static_cast<double>(m_nCount);
    cv::Mat_<double> deviation;
    cv::sqrt(cv::max((m_oSquares - m_oSum.mul(m_oSum) / n) / (n - 1), 0.0), deviation);
    return deviation;
}

double Deviation::median() const
{
    return m_nCount < 2 ? std::numeric_limits<double>::quiet_NaN() : medianOf(values());
}

} // namespace velmo::camera

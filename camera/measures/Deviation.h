#pragma once

#include "core/Export.h"

#include <opencv2/core.hpp>

#include <cstddef>

namespace velmo::camera {

/// Standard deviation over time of each of many values, which come frame by frame.
class VELMO_API Deviation
{
public:
    /// @param values  as many as the first time
    void add(const cv::Mat_<double>& values);

    /// Of each value; NaN before there are two of it.
    cv::Mat_<double> values() const;

    /// The median over the values of their deviations.
    double median() const;

private:
    std::size_t m_nCount = 0;
    cv::Mat_<double> m_oSum;
    cv::Mat_<double> m_oSquares;
};

} // namespace velmo::camera

#pragma once

#include "camera/Picture.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::camera {

/// Curves over one horizontal axis, with labelled axes and their names at the right.
class VELMO_API Plot
{
public:
    Plot(std::string xLabel, std::string yLabel)
        : m_strXLabel(std::move(xLabel)), m_strYLabel(std::move(yLabel))
    {}

    /// @param name    of the line, for the key
    /// @param values  at 0, step, 2 step, ...; what is not finite leaves a gap
    /// @param colour  blue, green, red
    void add(std::string name, std::vector<double> values, const cv::Scalar& colour);

    /// How far apart the values stand on the horizontal axis; 1 if not given.
    void setStep(double step) { m_dStep = step; }

    Picture draw(cv::Size size) const;

private:
    struct Curve
    {
        std::string m_strName;
        std::vector<double> m_vecValues;
        cv::Scalar m_oColour;
    };

    std::string m_strXLabel;
    std::string m_strYLabel;
    std::vector<Curve> m_vecCurves;
    double m_dStep = 1;
};

} // namespace velmo::camera

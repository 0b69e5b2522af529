#include "camera/measures/Course.h"

#include "camera/drawing/MarkColour.h"
#include "camera/drawing/Plot.h"

namespace velmo::camera {
namespace {

const cv::Size plotSize(900, 420);

Plot plotOf(const std::string& label, const std::string& unit, std::optional<double> fps)
{
    Plot plot(fps ? "time (s)" : "frame", label + (unit.empty() ? " (counts)" : " (" + unit.substr(1) + ")"));
    plot.setStep(fps ? 1 / *fps : 1);
    return plot;
}

} // namespace

void Course::add(const ShapeMeter& meter)
{
    m_vecMeans.resize(meter.entries().size());
    m_vecDeltas.resize(meter.deltas().size());
    for (std::size_t i = 0; i < m_vecMeans.size(); ++i)
        m_vecMeans[i].push_back(meter.entries()[i].figures.mean);
    for (std::size_t i = 0; i < m_vecDeltas.size(); ++i)
        m_vecDeltas[i].push_back(meter.deltas()[i].difference);
}

Picture Course::draw(const ShapeMeter& meter, std::optional<double> fps) const
{
    const std::string unit = meter.thermometer().unit();
    Plot means = plotOf("mean", unit, fps);
    for (std::size_t i = 0; i < m_vecMeans.size(); ++i)
        means.add(meter.entries()[i].name, m_vecMeans[i], markColour(static_cast<unsigned>(i) + 1));
    Picture picture = means.draw(plotSize);
    if (m_vecDeltas.empty())
        return picture;
    Plot deltas = plotOf("difference", unit, fps);
    for (std::size_t i = 0; i < m_vecDeltas.size(); ++i)
        deltas.add(meter.deltas()[i].name, m_vecDeltas[i], markColour(static_cast<unsigned>(i) + 1));
    picture.push_back(deltas.draw(plotSize));
    return picture;
}

} // namespace velmo::camera

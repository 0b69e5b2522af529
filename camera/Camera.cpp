#include "camera/Camera.h"

#include "camera/drawing/Enlarge.h"
#include "camera/measures/BlobPicture.h"

#include <algorithm>

namespace velmo::camera {

Camera::Camera(const Settings& settings, const Calibration& calibration)
    : m_oUnit(settings, calibration.unit), m_oChain(settings, calibration),
      m_oRange(settings, m_oUnit.thermometer), m_oColouring(settings, m_oUnit.thermometer),
      m_oBlobRule(BlobRule::from(settings, m_oUnit.thermometer)),
      m_s32Scale(static_cast<int>(settings.numbers("picture/scale")[0]))
{
    if (settings.flag("picture/legend"))
        m_oLegend.emplace(m_oUnit.thermometer);
}

const Frame& Camera::clean(const Frame& raw)
{
    raw.copyTo(m_oRaw);
    m_oClean = m_oRaw; // the same memory: stages work in place, or hand on memory of their own
    m_oChain.apply(m_oClean);
    return m_oClean;
}

const Measurement& Camera::measure(const Frame& clean)
{
    m_oMeasurement = {};
    if (!clean.empty()) {
        double low = 0, high = 0;
        cv::minMaxLoc(clean, &low, &high);
        m_oMeasurement.low = static_cast<unsigned short>(low);
        m_oMeasurement.high = static_cast<unsigned short>(high);
        m_oMeasurement.mean = cv::mean(clean)[0];
    }
    if (m_oBlobRule) {
        m_oMeasurement.blobs = findBlobs(clean, *m_oBlobRule, m_oUnit.thermometer);
        m_oTracker.label(m_oMeasurement.blobs);
    }
    return m_oMeasurement;
}

const Picture& Camera::paint(const Frame& clean)
{
    const ValueRange range = m_oRange.of(clean);
    m_oColouring.paint(clean, range, m_oPainted);
    if (m_oBlobRule)
        m_oEnlarged = withBlobs(m_oPainted, m_oMeasurement.blobs, m_oTracker, m_s32Scale);
    else if (m_s32Scale > 1)
        enlarge(m_oPainted, m_s32Scale, m_oEnlarged);
    const Picture& picture = m_oBlobRule || m_s32Scale > 1 ? m_oEnlarged : m_oPainted;
    if (!m_oLegend)
        return picture;
    m_oLegend->draw(picture, m_oColouring.table(), range, m_oLabelled);
    return m_oLabelled;
}

const Picture& Camera::show(const Frame& raw)
{
    const Frame& frame = clean(raw);
    if (m_oBlobRule)
        measure(frame);
    return paint(frame);
}

} // namespace velmo::camera

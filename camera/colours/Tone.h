#pragma once

#include "camera/Frame.h"
#include "camera/Settings.h"
#include "camera/colours/Detail.h"
#include "camera/colours/Plateau.h"
#include "camera/colours/Range.h"

#include "core/Export.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <optional>
#include <string>
#include <vector>

namespace velmo::camera {

/// How the values of a range share out the palette: colours/tone and colours/detail. Steps, in this order:
/// details are amplified; then the palette is shared out evenly, by a plateau, or by place and value.
class VELMO_API ToneRule
{
public:
    explicit ToneRule(const Settings& settings = {});

    /// Whether every value has the same share, and nothing is amplified.
    bool isPlain() const { return !m_bPlateau && !isLocal() && !m_oDetail; }

    /// Whether colours tell a value only together with where it is.
    bool isLocal() const { return !m_pLocal.empty(); }

    /// Whether pixels are not coloured by what they are: details are amplified, or colours local.
    bool changesFrames() const { return isLocal() || m_oDetail; }

    /// What a legend has to say of it; nothing if colours are those of values.
    std::string note() const;

    /// Takes the next frame of the stream.
    /// @returns what is to be coloured: values of the range, or, if colours are local, places in the palette,
    ///          0 to 65535. The frame itself, or memory that is used again by the next call.
    const Frame& apply(const Frame& frame, ValueRange range);

    /// The places in the palette of the values of the last range, 0 to 65535; none if they are spread evenly.
    const std::vector<unsigned short>& places() const { return m_vecPlaces; }

private:
    void measureNoise(const Frame& frame);
    void equaliseLocally(const Frame& frame, ValueRange range);
    void stretch(const Frame& frame, ValueRange range, int steps);

    bool m_bPlateau = false;
    std::optional<Detail> m_oDetail;
    std::string m_strDetail;
    cv::Ptr<cv::CLAHE> m_pLocal;

    Plateau m_oPlateau;
    double m_dNoise = -1; ///< gliding; below 0 before the first frame
    std::vector<unsigned short> m_vecPlaces;
    std::vector<float> m_vecVariances;
    std::vector<unsigned short> m_vecSteps; ///< for each value of the range
    Frame m_oDetailed;
    Frame m_oStretched;
    Frame m_oToned;
};

} // namespace velmo::camera

#include "camera/colours/Tone.h"

#include "camera/measures/FineNoise.h"

#include <algorithm>
#include <cstddef>

namespace velmo::camera {
namespace {

constexpr int s32LastPlace = 65535;
constexpr int s32MostTiles = 8;
constexpr int s32LeastTile = 30; ///< pixels on a side

/// Part of the range that is an edge rather than a detail.
constexpr double dEdge = 0.05;

cv::Size tilesOf(cv::Size frame)
{
    return {std::clamp(frame.width / s32LeastTile, 1, s32MostTiles),
            std::clamp(frame.height / s32LeastTile, 1, s32MostTiles)};
}

} // namespace

ToneRule::ToneRule(const Settings& settings) : m_bPlateau(settings.text("colours/tone") == "plateau")
{
    if (settings.text("colours/tone") == "local")
        m_pLocal = cv::createCLAHE();
    if (const std::vector<double> most = settings.numbers("colours/detail"); !most.empty() && most[0] > 1) {
        m_oDetail.emplace(most[0]);
        m_strDetail = settings.text("colours/detail");
    }
}

std::string ToneRule::note() const
{
    return isLocal() ? "colours are local" : m_oDetail ? "detail x " + m_strDetail : "";
}

const Frame& ToneRule::apply(const Frame& frame, ValueRange range)
{
    if (isPlain() || frame.empty())
        return frame;
    measureNoise(frame);
    const Frame* shown = &frame;
    if (m_bPlateau)
        m_vecPlaces = m_oPlateau.places(frame, range, m_dNoise);
    if (m_oDetail) {
        m_oDetail->apply(frame, m_dNoise, dEdge * (range.high - range.low), m_oDetailed);
        shown = &m_oDetailed;
    }
    if (!isLocal())
        return *shown;
    equaliseLocally(*shown, range);
    return m_oToned;
}

void ToneRule::measureNoise(const Frame& frame)
{
    const double now = fineNoise(frame, m_vecVariances);
    m_dNoise += (m_dNoise < 0 ? 1 : RangeRule::dGlide) * (now - m_dNoise);
}

void ToneRule::equaliseLocally(const Frame& frame, ValueRange range)
{
    constexpr double dLeastSlope = 0.1; // of what is clipped; what is shared out evenly adds 1 at most
    constexpr int s32LeastSteps = 64;
    const cv::Size tiles = tilesOf(frame.size());
    const double slope = std::max(Plateau::slopeLimit(range, m_dNoise) - 1, dLeastSlope);
    // CLAHE lets every step have a pixel of a tile at least, whatever the limit: steps that are too many for
    // the pixels would lift the noise. Where that makes them coarse, noise is as large as they are.
    const double pixels = static_cast<double>(frame.total()) / tiles.area();
    const int span = std::max(range.high - range.low, 1);
    const int steps = std::min(span, std::max(s32LeastSteps, static_cast<int>(slope * pixels)));
    stretch(frame, range, steps);
    m_pLocal->setTilesGridSize(tiles);
    m_pLocal->setClipLimit(slope * s32LastPlace / steps); // of its 65,536 places only the steps occur
    m_pLocal->apply(m_oStretched, m_oToned);
}

void ToneRule::stretch(const Frame& frame, ValueRange range, int steps)
{
    const int span = std::max(range.high - range.low, 1);
    m_vecSteps.resize(static_cast<std::size_t>(span) + 1);
    for (int value = 0; value <= span; ++value) {
        const int step = static_cast<int>((static_cast<long>(value) * steps + span / 2) / span);
        m_vecSteps[static_cast<std::size_t>(value)] =
            static_cast<unsigned short>(static_cast<long>(step) * s32LastPlace / steps);
    }
    m_oStretched.create(frame.size());
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            m_oStretched[r][c] =
                m_vecSteps[static_cast<std::size_t>(std::clamp(frame[r][c] - range.low, 0, span))];
}

} // namespace velmo::camera

#include "camera/measures/BlobTracker.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace velmo::camera {
namespace {

constexpr double minReach = 4; ///< pixels: specks have hardly an extent, and noise moves them

double reachOf(const cv::Rect& box)
{
    return std::max(minReach, std::hypot(box.width, box.height) / 2);
}

double side(std::size_t pixels)
{
    return std::sqrt(static_cast<double>(pixels));
}

} // namespace

std::vector<BlobTracker::Pair> BlobTracker::pairsOf(const std::vector<Blob>& blobs) const
{
    std::vector<Pair> pairs;
    for (const auto& [label, track] : m_mapTracks) {
        const double reach = reachOf(track.m_oBox);
        for (std::size_t i = 0; i < blobs.size(); ++i) {
            const double moved = cv::norm(blobs[i].centre - track.m_vecPath.back());
            const double grown = std::abs(side(blobs[i].component.getNrOfPoints()) - side(track.m_nPixels));
            if (moved <= reach)
                pairs.push_back({moved + grown, label, i});
        }
    }
    std::sort(pairs.begin(), pairs.end(), [](const Pair& left, const Pair& right) {
        return std::tie(left.m_dDistance, left.m_u32Label, left.m_nBlob) <
               std::tie(right.m_dDistance, right.m_u32Label, right.m_nBlob);
    });
    return pairs;
}

void BlobTracker::follow(unsigned label, Blob& blob)
{
    Track& track = m_mapTracks[label];
    track.m_oBox = blob.box;
    track.m_nPixels = blob.component.getNrOfPoints();
    track.m_s32Unseen = 0;
    track.m_vecPath.push_back(blob.centre);
    blob.component.setLabel(label);
}

void BlobTracker::label(std::vector<Blob>& blobs)
{
    for (auto& entry : m_mapTracks)
        ++entry.second.m_s32Unseen;
    std::vector<bool> labelled(blobs.size());
    for (const Pair& pair : pairsOf(blobs)) {
        const bool taken = m_mapTracks[pair.m_u32Label].m_s32Unseen == 0;
        if (taken || labelled[pair.m_nBlob])
            continue;
        follow(pair.m_u32Label, blobs[pair.m_nBlob]);
        labelled[pair.m_nBlob] = true;
    }
    for (std::size_t i = 0; i < blobs.size(); ++i)
        if (!labelled[i])
            follow(m_u32NextLabel++, blobs[i]);
    for (auto entry = m_mapTracks.begin(); entry != m_mapTracks.end();)
        entry = entry->second.m_s32Unseen > s32PatienceFrames ? m_mapTracks.erase(entry) : std::next(entry);
}

const std::vector<cv::Point2d>& BlobTracker::path(unsigned label) const
{
    return m_mapTracks.at(label).m_vecPath;
}

} // namespace velmo::camera

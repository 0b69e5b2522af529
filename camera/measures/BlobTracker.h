#pragma once

#include "camera/measures/Blobs.h"

#include "core/Export.h"

#include <map>
#include <vector>

namespace velmo::camera {

/// Labels the blobs of consecutive frames so that what moves slowly keeps its label.
///
/// A blob goes on with the label whose blob was last seen closest to it, if that is not farther than that
/// blob reached; a different size counts as distance. Others get the next label. A label that has not been
/// seen for some frames is not given again.
class VELMO_API BlobTracker
{
public:
    static constexpr int s32PatienceFrames = 9; ///< about a second of a camera that may be exported

    /// Sets the labels of the components of one frame.
    void label(std::vector<Blob>& blobs);

    /// Where the centre of the blob with this label has been, frame by frame, as long as it is followed.
    const std::vector<cv::Point2d>& path(unsigned label) const;

private:
    struct Track
    {
        cv::Rect m_oBox;
        std::size_t m_nPixels = 0;
        int m_s32Unseen = 0;
        std::vector<cv::Point2d> m_vecPath;
    };
    struct Pair
    {
        double m_dDistance;
        unsigned m_u32Label;
        std::size_t m_nBlob;
    };

    std::vector<Pair> pairsOf(const std::vector<Blob>& blobs) const;
    void follow(unsigned label, Blob& blob);

    std::map<unsigned, Track> m_mapTracks;
    unsigned m_u32NextLabel = 1;
};

} // namespace velmo::camera

#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <opencv2/core.hpp>

#include <vector>

namespace velmo::camera {

/// Amplifies what is fine in frames. A guided filter with the frame as its own guide parts them into a base
/// that keeps edges, and details; details are amplified by as much as they stand out of the noise around
/// them, so that what is flat stays as it is. Statistics are those of boxes of 12 x 12 pixels, every 4
/// pixels, and linear between.
class VELMO_API Detail
{
public:
    /// @param most  how many times details are amplified at most, 1 or more
    explicit Detail(double most) : m_dMost(most) {}

    /// @param frame  counts
    /// @param noise  of the frame, in counts
    /// @param edge   what is as large as this, in counts, is no detail any more but an edge
    /// @param out    becomes the frame with its details amplified, within 16 bits
    void apply(const Frame& frame, double noise, double edge, Frame& out);

private:
    using Plane = cv::Mat_<float>;

    void measure(const Frame& frame);
    void decide(double noise, double edge);
    void amplify(const Frame& frame, Frame& out);

    double m_dMost;
    float m_fLevel = 0; ///< taken off, so that single precision is plenty
    // Of blocks of 4 x 4 pixels:
    Plane m_oMeans, m_oSquares, m_oFine;
    // What is added to a value v is slope * v - offset.
    Plane m_oSlopes, m_oOffsets, m_oSlopesHere, m_oOffsetsHere;
    std::vector<float> m_vecLines[4]; ///< slopes and offsets of two rows of blocks, for every column
};

} // namespace velmo::camera

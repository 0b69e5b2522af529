// Not installed.
#pragma once

#include "camera/Frame.h"

#include <algorithm>

namespace velmo::camera {

/// The last frame of a stream.
///
/// Cameras and recorders repeat frames to keep a rate. Such a frame says nothing new; what learns from
/// differences in time would take it for one without noise.
class LastFrame
{
public:
    /// Keeps the frame. Returns false if it is the last one to the bit.
    bool renew(const Frame& frame)
    {
        if (isSame(frame))
            return false;
        frame.copyTo(m_oFrame);
        return true;
    }

    const Frame& frame() const { return m_oFrame; }

private:
    bool isSame(const Frame& frame) const
    {
        if (frame.size() != m_oFrame.size())
            return false;
        for (int y = 0; y < frame.rows; ++y)
            if (!std::equal(frame[y], frame[y] + frame.cols, m_oFrame[y]))
                return false;
        return true;
    }

    Frame m_oFrame;
};

} // namespace velmo::camera

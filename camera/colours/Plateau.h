#pragma once

#include "camera/Frame.h"
#include "camera/colours/Range.h"

#include "core/Export.h"

#include <vector>

namespace velmo::camera {

/// Shares out a palette among the values of frames by how many pixels have them, up to a plateau: what is
/// rare keeps some colours, and what fills the frame gets more, but not so many that its noise shows. What it
/// knows of the frames glides after them as ranges do, and jumps where the scene becomes another, so that
/// films do not flicker.
class VELMO_API Plateau
{
public:
    /// No value gets more than this times the colours that it has when all have the same.
    static constexpr double dMostSlope = 5;

    /// The most that noise may take of the palette.
    static constexpr double dMostNoise = 3.0 / 255;

    /// @param range  of the values that the palette covers
    /// @param noise  of the frame, in counts
    /// @returns the steepest slope that is allowed for such noise, 1 to dMostSlope
    static double slopeLimit(ValueRange range, double noise);

    /// Learns from the next frame.
    /// @returns the places in the palette, 0 to 65535, of the values of the range: never falling, with the
    ///          first and the last one at the ends
    const std::vector<unsigned short>& places(const Frame& frame, ValueRange range, double noise);

private:
    void learn(const Frame& frame, ValueRange range);
    bool isAnotherScene(ValueRange range) const;

    std::vector<float> m_vecShares; ///< of the pixels, for each value; gliding; empty before the first frame
    std::vector<unsigned> m_vecCounts;
    std::vector<unsigned short> m_vecPlaces;
};

} // namespace velmo::camera

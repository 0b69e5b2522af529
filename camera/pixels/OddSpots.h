// Not installed.
#pragma once

#include "camera/pixels/SearchRules.h"

#include <functional>
#include <vector>

namespace velmo::camera {

/// How a spot has to stand out.
struct OddRule
{
    float threshold = 8;     ///< in local deviations
    float overRing = 8;      ///< in what the pixels around it stand out themselves
    float leak = 0.1F;       ///< part of it that its neighbours may show too: a lens blurs what it sees
    float wideFactor = 1.2F; ///< on the deviation of the wider neighbourhood
    float leastDeviation = 0.7F;
};

/// Finds single pixels and small groups that stand out sharply from what is around them.
///
/// Three passes, from what is far out to what just is, so that the worst do not count as neighbours of the
/// rest.
class OddSpots
{
public:
    using Take = std::function<void(cv::Point, float deviations)>;

    /// @param bad  left out; what is found joins it
    OddSpots(const Plane& plane, Mask& bad, const OddRule& rule);

    void find(const Take& take);

    /// The local deviation that is used at a pixel.
    float deviation(int y, int x) const { return std::max(m_oNearDeviation(y, x), m_oWide(y, x)); }

private:
    using Group = std::vector<cv::Point>;
    struct Ring;

    void lookAt(int y, int x);
    void widen();
    float wideAt(int top, int left) const;
    float score(int y, int x) const;
    bool findOnce(float threshold, const Take& take);
    std::vector<Group> groupsOf(const Mask& low, const Mask& seeds) const;
    Group verified(const Group& group, float threshold, std::vector<float>& deviations) const;
    Ring ringOf(const Group& group) const;
    template <class Masked>
    float agreed(int y, int x, float middle, const Masked& masked) const;

    const Plane& m_oPlane;
    Mask& m_oBad;
    OddRule m_oRule;
    Plane m_oNear, m_oNearDeviation; ///< of the 24 around a pixel
    Plane m_oFar, m_oFarDeviation;   ///< of those at a distance of two and three
    Plane m_oWide;
};

} // namespace velmo::camera

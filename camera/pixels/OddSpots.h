// Not installed.
#pragma once

#include "camera/pixels/SearchRules.h"

#include <functional>
#include <limits>
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
    OddSpots(const OddSpots&) = delete;
    OddSpots& operator=(const OddSpots&) = delete;

    void find(const Take& take);

    /// The local deviation that is used at a pixel.
    float deviation(int y, int x);

private:
    using Group = std::vector<cv::Point>;
    struct Ring;

    /// The median of good values that stand about each pixel, and of their distances from it: worked out when
    /// asked for, as few pixels ever need all of them.
    class Surroundings
    {
    public:
        Surroundings(const OddSpots& spots, bool far);
        float middle(int y, int x);
        float deviation(int y, int x);
        void forget(int y, int x) { m_oMiddle(y, x) = m_oDeviation(y, x) = unknown; }

    private:
        static constexpr float unknown = std::numeric_limits<float>::infinity();

        void collect(int y, int x);

        const OddSpots& m_oSpots;
        bool m_bFar; ///< those at a distance of two and three; otherwise the 24 around a pixel
        Plane m_oMiddle, m_oDeviation;
        std::vector<float> m_vecValues;
    };

    void widen();
    float wideAt(int top, int left);
    float standsOut(Surroundings& from, int y, int x, float least) const;
    float score(int y, int x, float least);
    bool findOnce(float threshold, const Take& take);
    std::vector<Group> groupsOf(const Mask& low, const Mask& seeds) const;
    Group verified(const Group& group, float threshold, std::vector<float>& deviations);
    Ring ringOf(const Group& group);
    template <class Masked>
    float agreed(int y, int x, float middle, const Masked& masked) const;

    const Plane& m_oPlane;
    Mask& m_oBad;
    OddRule m_oRule;
    Surroundings m_oNear{*this, false}, m_oFar{*this, true};
    Plane m_oWide;
};

} // namespace velmo::camera

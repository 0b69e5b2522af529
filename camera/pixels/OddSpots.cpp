#include "camera/pixels/OddSpots.h"

#include "camera/pixels/Robust.h"

#include <opencv2/imgproc.hpp>

#include <cstdlib>
#include <limits>

namespace velmo::camera {
namespace {

constexpr float largest = std::numeric_limits<float>::max();

// Parts of the threshold.
constexpr float seedPart = 0.75F;   ///< a group has a pixel beyond it
constexpr float lowPart = 0.5F;     ///< and all of its pixels are beyond this one
constexpr float memberPart = 0.75F; ///< what counts of a group in the end
constexpr int largeGroup = 4;       ///< pixels of a group that together say more: seedPart is enough

constexpr int largestGroup = 9;
constexpr int widestGroup = 4;

/// Of what a spot stands out, so much is left against the means of opposite neighbours, whatever the
/// direction: the end of a line, or a corner, fails in one of them.
constexpr float agreedPart = 0.6F;

/// How far to look for a neighbour that is good.
constexpr int reach = 4;

// The wider neighbourhood, for blocks of pixels: three quarters of the pixels differ from their neighbours by
// less than this many deviations.
constexpr int block = 4, around = 7;
constexpr double widePart = 0.75;
constexpr float deviationsAtWidePart = 1.706F;

/// Good values in a square of this radius, without its centre of another; no centre at all is -1.
void gather(const Plane& plane, const Mask& bad, cv::Point at, int radius, int without,
            std::vector<float>& values)
{
    values.clear();
    for (int y = std::max(at.y - radius, 0); y <= std::min(at.y + radius, plane.rows - 1); ++y)
        for (int x = std::max(at.x - radius, 0); x <= std::min(at.x + radius, plane.cols - 1); ++x)
            if (std::max(std::abs(y - at.y), std::abs(x - at.x)) > without && bad(y, x) == 0)
                values.push_back(plane(y, x));
}

/// More than nine in ten of them are; of few, all but one.
float outstandingOf(std::vector<float>& values)
{
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(9 * values.size() / 10);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

bool contains(const std::vector<cv::Point>& points, int y, int x)
{
    return std::find(points.begin(), points.end(), cv::Point(x, y)) != points.end();
}

} // namespace

/// What lies around a group at a distance of one and two.
struct OddSpots::Ring
{
    Spread spread;
    float outstanding; ///< what nine in ten of its pixels stand out themselves
    float rise;        ///< of the pixels that touch the group over those behind them
    std::size_t touching;
    std::size_t count;
};

OddSpots::Surroundings::Surroundings(const OddSpots& spots, bool far)
    : m_oSpots(spots), m_bFar(far), m_oMiddle(spots.m_oPlane.size(), unknown),
      m_oDeviation(spots.m_oPlane.size(), unknown)
{}

void OddSpots::Surroundings::collect(int y, int x)
{
    const Plane& plane = m_oSpots.m_oPlane;
    const Mask& bad = m_oSpots.m_oBad;
    m_vecValues.clear();
    if (m_bFar)
        gather(plane, bad, {x, y}, 3, 1, m_vecValues);
    for (int radius = 2; radius <= 6 && m_vecValues.size() < 8; radius += 2)
        gather(plane, bad, {x, y}, radius, 0, m_vecValues);
}

float OddSpots::Surroundings::middle(int y, int x)
{
    float& middle = m_oMiddle(y, x);
    if (middle == unknown) {
        collect(y, x);
        middle = m_vecValues.size() < 3 ? m_oSpots.m_oPlane(y, x) : medianOf(m_vecValues);
    }
    return middle;
}

float OddSpots::Surroundings::deviation(int y, int x)
{
    float& deviation = m_oDeviation(y, x);
    if (deviation == unknown) {
        const float from = middle(y, x);
        collect(y, x);
        for (float& value : m_vecValues)
            value = std::abs(value - from);
        deviation = m_vecValues.size() < 3 ? largest : medianOf(m_vecValues);
    }
    return deviation;
}

OddSpots::OddSpots(const Plane& plane, Mask& bad, const OddRule& rule)
    : m_oPlane(plane), m_oBad(bad), m_oRule(rule), m_oWide(plane.size())
{
    widen();
}

float OddSpots::deviation(int y, int x)
{
    return std::max(m_oNear.deviation(y, x), m_oWide(y, x));
}

float OddSpots::wideAt(int top, int left)
{
    std::vector<float> odd;
    for (int y = std::max(0, top - around); y < std::min(m_oPlane.rows, top + block + around); y += 2)
        for (int x = std::max(0, left - around); x < std::min(m_oPlane.cols, left + block + around); x += 2)
            if (m_oBad(y, x) == 0)
                odd.push_back(std::abs(m_oPlane(y, x) - m_oNear.middle(y, x)));
    const float deviation = odd.size() < 8 ? 0 : quantileOf(odd, widePart) / deviationsAtWidePart;
    return std::max(deviation * m_oRule.wideFactor, m_oRule.leastDeviation);
}

void OddSpots::widen()
{
    for (int top = 0; top < m_oPlane.rows; top += block)
        for (int left = 0; left < m_oPlane.cols; left += block) {
            const cv::Rect whole({}, m_oPlane.size());
            m_oWide(cv::Rect(left, top, block, block) & whole) = wideAt(top, left);
        }
}

/// In deviations; 0 for what is not that far.
float OddSpots::standsOut(Surroundings& from, int y, int x, float least) const
{
    const float far = std::abs(m_oPlane(y, x) - from.middle(y, x));
    return far <= least * m_oWide(y, x) ? 0 : far / std::max(from.deviation(y, x), m_oWide(y, x));
}

float OddSpots::score(int y, int x, float least)
{
    return std::max(standsOut(m_oNear, y, x, least), standsOut(m_oFar, y, x, least));
}

/// How far a pixel stands out from the straight lines between its good neighbours in four directions, and
/// from the middle of them all, where they agree on the side.
template <class Masked>
float OddSpots::agreed(int y, int x, float middle, const Masked& masked) const
{
    const float value = m_oPlane(y, x);
    float low = value - middle, high = low;
    for (const cv::Point& step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(1, 1), cv::Point(-1, 1)}) {
        float found[2];
        int distance[2] = {0, 0};
        for (const int side : {0, 1})
            for (int j = 1; j <= reach && distance[side] == 0; ++j) {
                const int sign = side == 0 ? j : -j;
                const cv::Point at(x + sign * step.x, y + sign * step.y);
                if (!cv::Rect({}, m_oPlane.size()).contains(at))
                    break;
                if (!masked(at.y, at.x)) {
                    found[side] = m_oPlane(at);
                    distance[side] = j;
                }
            }
        if (distance[0] == 0 || distance[1] == 0)
            continue;
        const float line =
            (found[0] * static_cast<float>(distance[1]) + found[1] * static_cast<float>(distance[0])) /
            static_cast<float>(distance[0] + distance[1]);
        low = std::min(low, value - line);
        high = std::max(high, value - line);
    }
    return low > 0 ? low : high < 0 ? high : 0;
}

void OddSpots::find(const Take& take)
{
    for (const float threshold : {64.0F, 24.0F})
        findOnce(threshold, take);
    for (int pass = 0; pass < 3 && findOnce(m_oRule.threshold, take); ++pass)
        ;
}

bool OddSpots::findOnce(float threshold, const Take& take)
{
    Mask seeds(m_oPlane.size(), 0), low(m_oPlane.size(), 0), found(m_oPlane.size(), 0);
    for (int y = 0; y < m_oPlane.rows; ++y)
        for (int x = 0; x < m_oPlane.cols; ++x)
            if (m_oBad(y, x) == 0) {
                const float here = score(y, x, threshold * lowPart);
                seeds(y, x) = here > threshold * seedPart;
                low(y, x) = here > threshold * lowPart;
            }
    std::vector<float> deviations;
    for (Mask* mask : {&low, &seeds}) { // with the fainter parts of a group, or else without them
        mask->setTo(0, found);
        for (const Group& group : groupsOf(*mask, seeds)) {
            const Group good = verified(group, threshold, deviations);
            for (std::size_t n = 0; n < good.size(); ++n) {
                take(good[n], deviations[n]);
                found(good[n]) = m_oBad(good[n]) = 1;
            }
        }
    }
    cv::dilate(found, found, cv::Mat(), {-1, -1}, 3);
    for (int y = 0; y < m_oPlane.rows; ++y)
        for (int x = 0; x < m_oPlane.cols; ++x)
            if (found(y, x) != 0) {
                m_oNear.forget(y, x);
                m_oFar.forget(y, x);
            }
    widen();
    return cv::countNonZero(found) > 0;
}

/// Pixels that touch each other, a seed among them, if they are few and close together.
std::vector<OddSpots::Group> OddSpots::groupsOf(const Mask& low, const Mask& seeds) const
{
    cv::Mat_<int> labels, boxes;
    cv::Mat_<double> centres;
    const auto count =
        static_cast<std::size_t>(cv::connectedComponentsWithStats(low, labels, boxes, centres, 8));
    std::vector<Group> groups(count);
    std::vector<char> hasSeed(count, 0);
    for (int y = 0; y < low.rows; ++y)
        for (int x = 0; x < low.cols; ++x) {
            const int label = labels(y, x);
            if (label == 0 || boxes(label, cv::CC_STAT_AREA) > largestGroup ||
                boxes(label, cv::CC_STAT_WIDTH) > widestGroup ||
                boxes(label, cv::CC_STAT_HEIGHT) > widestGroup)
                continue;
            groups[static_cast<std::size_t>(label)].push_back({x, y});
            hasSeed[static_cast<std::size_t>(label)] |= static_cast<char>(seeds(y, x));
        }
    for (std::size_t n = 0; n < count; ++n)
        if (hasSeed[n] == 0)
            groups[n].clear();
    return groups;
}

OddSpots::Ring OddSpots::ringOf(const Group& group)
{
    const auto masked = [&](int y, int x) { return m_oBad(y, x) != 0 || contains(group, y, x); };
    const cv::Rect box = cv::boundingRect(group);
    const cv::Rect wide =
        cv::Rect(box.x - 2, box.y - 2, box.width + 4, box.height + 4) & cv::Rect({}, m_oPlane.size());
    std::vector<float> touching, behind, outstanding;
    for (int y = wide.y; y < wide.y + wide.height; ++y)
        for (int x = wide.x; x < wide.x + wide.width; ++x) {
            if (masked(y, x))
                continue;
            int distance = 3;
            for (const cv::Point& member : group)
                distance = std::min(distance, std::max(std::abs(member.x - x), std::abs(member.y - y)));
            if (distance > 2)
                continue;
            (distance == 1 ? touching : behind).push_back(m_oPlane(y, x));
            outstanding.push_back(std::abs(agreed(y, x, m_oNear.middle(y, x), masked)));
        }
    std::vector<float> all = touching;
    all.insert(all.end(), behind.begin(), behind.end());
    if (all.empty())
        return {};
    const Spread spread = spreadOf(all);
    const float level = behind.empty() ? spread.middle : medianOf(behind);
    return {spread, outstandingOf(outstanding), touching.empty() ? 0 : meanOf(touching) - level,
            touching.size(), all.size()};
}

/// Those of a group that are odd in every respect. `deviations`: by how much.
OddSpots::Group OddSpots::verified(const Group& group, float threshold, std::vector<float>& deviations)
{
    deviations.clear();
    if (group.empty())
        return {};
    const Ring ring = ringOf(group);
    if (ring.count < 5)
        return {};
    const auto members = static_cast<float>(group.size());
    float height = 0;
    for (const cv::Point& pixel : group)
        height += std::abs(m_oPlane(pixel) - ring.spread.middle) / members;
    const float doubt = 1.5F * ring.spread.deviation /
                        std::sqrt(static_cast<float>(std::max<std::size_t>(1, ring.touching))) / height;
    const float enough = group.size() >= largeGroup ? threshold * seedPart : threshold;
    const auto masked = [&](int y, int x) { return m_oBad(y, x) != 0 || contains(group, y, x); };
    Group good;
    bool strong = false;
    for (const cv::Point& pixel : group) {
        const float full = m_oPlane(pixel) - ring.spread.middle;
        const float far = full / std::max(ring.spread.deviation, m_oWide(pixel));
        const float leak = (full > 0 ? ring.rise : -ring.rise) / height;
        if (std::abs(far) < enough * (group.size() > 1 ? memberPart : 1) || leak - doubt > m_oRule.leak ||
            height < m_oRule.overRing * ring.outstanding ||
            std::abs(agreed(pixel.y, pixel.x, ring.spread.middle, masked)) < agreedPart * std::abs(full))
            continue;
        good.push_back(pixel);
        deviations.push_back(far);
        strong = strong || std::abs(far) >= enough;
    }
    return strong ? good : Group{};
}

} // namespace velmo::camera

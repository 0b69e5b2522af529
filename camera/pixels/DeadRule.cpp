#include "camera/pixels/Robust.h"
#include "camera/pixels/SearchRules.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace velmo::camera {
namespace {

/// The highest value that can be: that of a sensor of 8 to 15 bits if it occurs, or else of 16.
int topOf(int highest)
{
    for (int bits = 8; bits < 16; ++bits)
        if (highest == (1 << bits) - 1)
            return highest;
    return 65535;
}

Mask atTheEnds(const PixelStatistics& statistics)
{
    const int top = topOf(statistics.m_s32Highest);
    return (statistics.m_oChanges == 0) & ((statistics.m_oFirst == 0) | (statistics.m_oFirst == top));
}

using Group = std::vector<cv::Point>;

std::vector<Group> connected(const Mask& mask)
{
    cv::Mat_<int> labels;
    std::vector<Group> groups(static_cast<std::size_t>(cv::connectedComponents(mask, labels, 8)));
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x)
            if (labels(y, x) != 0)
                groups[static_cast<std::size_t>(labels(y, x))].push_back({x, y});
    groups.erase(groups.begin());
    return groups;
}

/// The pixels of the next ring around a group, off the mask and not in a ring before. Moves the front on.
std::vector<float> nextRing(Group& front, const Mask& mask, const Plane& plane, int mark, cv::Mat_<int>& seen)
{
    std::vector<float> values;
    Group next;
    for (const cv::Point& pixel : front)
        for (int y = std::max(pixel.y - 1, 0); y <= std::min(pixel.y + 1, mask.rows - 1); ++y)
            for (int x = std::max(pixel.x - 1, 0); x <= std::min(pixel.x + 1, mask.cols - 1); ++x)
                if (mask(y, x) == 0 && seen(y, x) != mark) {
                    seen(y, x) = mark;
                    next.push_back({x, y});
                    values.push_back(plane(y, x));
                }
    front = next;
    return values;
}

/// Nothing in a scene follows a whole line of the sensor.
bool isWholeLine(const Group& group, cv::Size size)
{
    const cv::Rect box = cv::boundingRect(group);
    return (box.width == 1 && box.height == size.height) || (box.height == 1 && box.width == size.width);
}

/// How far a group at the end of the range is from what surrounds it; 0 for what is part of the scene:
/// something too bright has a rim, as a lens blurs it.
float farFromRim(const std::vector<float>& touching, const std::vector<float>& behind, float value, bool line)
{
    if (touching.size() < 3 || behind.size() < 3)
        return 0;
    std::vector<float> all = touching;
    all.insert(all.end(), behind.begin(), behind.end());
    const Spread spread = spreadOf(all);
    const float deviation = std::max(1.0F, spread.deviation);
    const float far = (value - spread.middle) / deviation;
    if (std::abs(far) < 3 || line)
        return std::abs(far) < 3 ? 0 : far;
    const float level = meanOf(behind);
    const float leak = (meanOf(touching) - level) / (value - level);
    const float doubt =
        1.5F * deviation *
        std::sqrt(1 / static_cast<float>(touching.size()) + 1 / static_cast<float>(behind.size())) /
        std::abs(value - level);
    return leak - 3 * doubt > 0.15F ? 0 : far;
}

/// Of the good pixels, how many changed no more often than so many times.
std::vector<long> changeCounts(const PixelStatistics& statistics, const Mask& leftOut)
{
    std::vector<long> counts(65536, 0);
    for (int y = 0; y < leftOut.rows; ++y)
        for (int x = 0; x < leftOut.cols; ++x)
            if (leftOut(y, x) == 0)
                ++counts[statistics.m_oChanges(y, x)];
    std::partial_sum(counts.begin(), counts.end(), counts.begin());
    return counts;
}

/// Whether pixels that never changed are not just the calmest of many that hardly ever did.
bool standApart(const std::vector<long>& counts, float usual)
{
    const auto few = static_cast<std::size_t>(std::max(1.0F, usual / 5));
    return 2 * (counts[few] - counts[0]) <= counts[0];
}

/// That a good pixel happens to never change.
constexpr double chance = 1e-4;

/// How far out it is, in deviations of its neighbours' changes, never to change; 0 if it may be chance.
float farFromChanging(const Suspects& suspects, cv::Point at, const std::vector<long>& counts)
{
    const PixelStatistics& statistics = suspects.statistics;
    std::vector<float> changes;
    for (int y = at.y - 3; y <= at.y + 3; ++y)
        for (int x = at.x - 3; x <= at.x + 3; ++x)
            if (suspects.inside(y, x) && at != cv::Point(x, y) && suspects.bad(y, x) == 0)
                changes.push_back(statistics.m_oChanges(y, x));
    if (changes.size() < 8)
        return 0;
    const double steps = static_cast<double>(std::min<std::size_t>(statistics.m_nFrames - 1, 65535));
    const double seen = static_cast<double>(changes.size()) * steps;
    const Spread spread = spreadOf(changes);
    const float usual = spread.middle;
    const auto byChance = static_cast<float>(std::sqrt(usual * (1 - usual / steps)));
    const float deviation = std::max(1.4826F * spread.deviation, byChance);
    const double still = std::max(1 - usual / steps, 1 / (seen + 2)); // chance of one step without a change
    if (steps * std::log(still) >= std::log(chance) || usual <= 2.5F * deviation ||
        !standApart(counts, usual))
        return 0;
    return usual / std::max(deviation, 1.0F);
}

} // namespace

void findDead(Suspects& suspects)
{
    const PixelStatistics& statistics = suspects.statistics;
    const Mask ends = atTheEnds(statistics);
    if (cv::countNonZero(ends) == 0)
        return;
    Plane raw; // with the shutter: that is what reaches the end
    statistics.m_oFirst.convertTo(raw, CV_32F);
    raw += statistics.m_oLevel;
    cv::Mat_<int> seen(ends.size(), 0);
    int mark = 0;
    for (const Group& group : connected(ends)) {
        ++mark;
        Group front = group;
        const std::vector<float> touching = nextRing(front, ends, raw, mark, seen);
        const std::vector<float> behind = nextRing(front, ends, raw, mark, seen);
        const float far = farFromRim(touching, behind, raw(group.front()), isWholeLine(group, ends.size()));
        for (const cv::Point& pixel : group)
            if (far != 0)
                suspects.flag(pixel, Dead, far);
    }
}

void findStuck(Suspects& suspects)
{
    constexpr int largestGroup = 25;
    const PixelStatistics& statistics = suspects.statistics;
    if (statistics.m_nFrames < 4)
        return;
    const Mask ends = atTheEnds(statistics);
    const std::vector<long> counts = changeCounts(statistics, suspects.bad | ends);
    const Mask still = (statistics.m_oChanges == 0) & (suspects.bad == 0);
    std::vector<std::pair<cv::Point, float>> found;
    for (const Group& group : connected(still))
        for (const cv::Point& pixel : group)
            if (group.size() <= largestGroup && ends(pixel) == 0)
                if (const float far = farFromChanging(suspects, pixel, counts); far > 0)
                    found.emplace_back(pixel, far);
    for (const auto& [pixel, far] : found)
        suspects.flag(pixel, Stuck, far);
}

} // namespace velmo::camera

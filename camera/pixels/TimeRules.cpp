#include "camera/pixels/OddSpots.h"
#include "camera/pixels/Robust.h"
#include "camera/pixels/SearchRules.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace velmo::camera {
namespace {

constexpr std::size_t fewestFrames = 5; ///< to judge what varies
constexpr float rounding = 0.25F;       ///< variance that whole numbers add, and to spare
constexpr float farOut = 7;             ///< deviations of the noise around

/// The values of the good pixels around one; not its own.
template <class Value>
std::vector<float> valuesAround(const Suspects& suspects, const Mask& bad, cv::Point at, int radius,
                                Value value)
{
    std::vector<float> values;
    for (int y = at.y - radius; y <= at.y + radius; ++y)
        for (int x = at.x - radius; x <= at.x + radius; ++x)
            if (suspects.inside(y, x) && at != cv::Point(x, y) && bad(y, x) == 0)
                values.push_back(value(y, x));
    return values;
}

/// Half the logarithm of the variance, to which what is usual is added: noise below it is no concern.
Plane noiseLevels(const PixelStatistics& statistics, const Mask& bad)
{
    std::vector<float> good;
    for (int y = 0; y < bad.rows; ++y)
        for (int x = 0; x < bad.cols; ++x)
            if (bad(y, x) == 0)
                good.push_back(statistics.m_oVariance(y, x));
    const float usual = good.empty() ? 0 : medianOf(good);
    const auto frames = static_cast<float>(statistics.m_nFrames);
    Plane levels(bad.size());
    for (int y = 0; y < bad.rows; ++y)
        for (int x = 0; x < bad.cols; ++x)
            levels(y, x) =
                0.5F * std::log(statistics.m_oVariance(y, x) * frames / (frames - 1) + rounding + usual);
    return levels;
}

float varianceOfValue(const PixelStatistics& statistics, cv::Point at)
{
    return statistics.m_oMovement(at) + 2 * statistics.m_oFollow(at) + statistics.m_oRestless(at);
}

/// Whether it is the pixel that varies and not the scene: the pixel's own part varies as much, and so does
/// its value; not in one frame alone, or else by far; and three times as far as its neighbours do.
bool variesByItself(const Suspects& suspects, const Mask& before, cv::Point at, float deviations)
{
    const PixelStatistics& statistics = suspects.statistics;
    const float variance = statistics.m_oVariance(at), restless = statistics.m_oRestless(at);
    const float ofValue = varianceOfValue(statistics, at);
    const auto frames = static_cast<float>(statistics.m_nFrames);
    const bool inOneFrame = statistics.m_oKurtosis(at) > variance * variance * (3 + 0.2F * frames);
    if (restless < 0.5F * variance || ofValue < 0.5F * variance || (inOneFrame && deviations < 2 * farOut))
        return false;
    auto around =
        valuesAround(suspects, before, at, 1, [&](int y, int x) { return statistics.m_oRestless(y, x); });
    return around.size() <= 2 || variance >= 9 * medianOf(around);
}

/// Two levels and nothing between: skewness squared and 1 are as much as the kurtosis.
bool jumps(const PixelStatistics& statistics, cv::Point at)
{
    const float variance = statistics.m_oVariance(at);
    const float kurtosis = statistics.m_oKurtosis(at) / (variance * variance);
    const float skewness = statistics.m_oSkew(at) / (variance * std::sqrt(variance));
    return (skewness * skewness + 1) / kurtosis > 0.7F;
}

/// How a pixel answers to what its neighbours do: 1 for as much as they. `doubt`: of that, by its noise.
struct Response
{
    float slope;
    float doubt;
};

Response responseOf(const PixelStatistics& statistics, int y, int x)
{
    const float movement = statistics.m_oMovement(y, x), follow = statistics.m_oFollow(y, x);
    if (movement <= 0)
        return {1, 1};
    const float noise = std::max(statistics.m_oRestless(y, x) - follow * follow / movement, 0.0F) + rounding;
    return {1 + follow / movement, std::sqrt(noise / movement / static_cast<float>(statistics.m_nFrames))};
}

/// How far the calmer quarter of the pixels goes by itself, at most: as a variance.
float restOf(const Suspects& suspects)
{
    std::vector<float> good;
    for (int y = 0; y < suspects.bad.rows; ++y)
        for (int x = 0; x < suspects.bad.cols; ++x)
            if (suspects.bad(y, x) == 0)
                good.push_back(suspects.statistics.m_oRestless(y, x));
    return good.empty() ? 0 : quantileOf(good, 0.25);
}

/// Whether a value goes less than half as far up and down as those of all that touch it but one, which go
/// with what is around them: fine things of the scene, which hide how a pixel answers, pass over all of them.
/// Of few frames less is asked for, as a variance is uncertain by so much. `rest`: what moves goes three
/// times as far.
bool hardlyVaries(const Suspects& suspects, cv::Point at, float rest)
{
    constexpr std::size_t enoughFrames = 15;
    const PixelStatistics& statistics = suspects.statistics;
    auto around = valuesAround(suspects, suspects.bad, at, 1, [&](int y, int x) {
        return varianceOfValue(statistics, {x, y});
    });
    if (statistics.m_nFrames < enoughFrames || around.size() < 5)
        return false;
    std::nth_element(around.begin(), around.begin() + 1, around.end());
    const float least = around[1];
    const float chance = std::exp(-4 / std::sqrt(static_cast<float>(statistics.m_nFrames - 1)));
    return statistics.m_oMovement(at) > std::max(9 * rest, 0.5F * least) &&
           varianceOfValue(statistics, at) + rounding < 0.25F * chance * least;
}

/// By how many deviations a pixel answers less than its neighbours; 0 for good ones.
float weakness(const Suspects& suspects, cv::Point at, float rest)
{
    const PixelStatistics& statistics = suspects.statistics;
    const Response own = responseOf(statistics, at.y, at.x);
    const float movement = statistics.m_oMovement(at);
    // Not so much as to be upside down: that is something else that passes by.
    if (own.slope >= 0.6F || own.slope <= -0.5F || 1 - own.slope <= 5 * own.doubt || movement <= 9 * rounding)
        return 0;
    auto slopes = valuesAround(suspects, suspects.bad, at, 2,
                               [&](int y, int x) { return responseOf(statistics, y, x).slope; });
    auto noises = valuesAround(suspects, suspects.bad, at, 2,
                               [&](int y, int x) { return statistics.m_oRestless(y, x); });
    // What passes before the edge of a warm thing that stays: values behind it go the other way, or keep
    // still where it is as warm.
    const auto around = valuesAround(suspects, suspects.bad, at, 1, [&](int y, int x) {
        return varianceOfValue(statistics, {x, y});
    });
    const auto still = std::count_if(around.begin(), around.end(),
                                     [&](float variance) { return variance < 0.25F * movement; });
    const auto upsideDown =
        std::count_if(slopes.begin(), slopes.end(), [](float slope) { return slope < -0.2F; });
    if (slopes.size() < 8 || still > 2 || upsideDown > 1)
        return 0;
    const float lowQuarter = quantileOf(slopes, 0.25);
    const Spread usual = spreadOf(slopes);
    const float missing = usual.middle - own.slope;
    const bool beyondNoise = missing * missing * movement > 6 * (medianOf(noises) + rounding);
    const bool outlies = beyondNoise && missing > 6 * std::max(usual.deviation, 0.67F * own.doubt);
    if (own.slope >= 0.5F * usual.middle || own.slope >= lowQuarter - 0.1F ||
        !(outlies || hardlyVaries(suspects, at, rest)))
        return 0;
    return missing / std::max(usual.deviation, own.doubt);
}

} // namespace

void findRestless(Suspects& suspects, const Mask& before)
{
    const PixelStatistics& statistics = suspects.statistics;
    if (statistics.m_nFrames < fewestFrames)
        return;
    const auto frames = static_cast<float>(statistics.m_nFrames);
    const Plane levels = noiseLevels(statistics, suspects.bad);
    // The logarithm of a deviation measured on few frames is uncertain by so much itself.
    const OddRule rule{farOut, 3, 0.3F, 1, std::max(0.2F, 0.67F / std::sqrt(2 * (frames - 1)))};
    Mask bad = before.clone();
    std::vector<std::pair<cv::Point, float>> found;
    OddSpots(levels, bad, rule).find([&](cv::Point pixel, float deviations) {
        if (deviations > 0 && variesByItself(suspects, before, pixel, deviations))
            found.emplace_back(pixel, deviations);
    });
    // What is near a wild pixel takes part in it: the medians around change with it.
    Plane variances(bad.size(), 0.0F);
    for (const auto& [pixel, deviations] : found)
        variances(pixel) = statistics.m_oVariance(pixel);
    cv::dilate(variances, variances, cv::Mat(), {-1, -1}, 2);
    const auto inShadow = [&](cv::Point pixel) {
        return variances(pixel) > 16 * statistics.m_oVariance(pixel);
    };
    for (const auto& [pixel, deviations] : found)
        if (!inShadow(pixel))
            suspects.flag(pixel, jumps(statistics, pixel) ? Twinkling : Noisy, deviations);
}

void findWeak(Suspects& suspects)
{
    if (suspects.statistics.m_nFrames < fewestFrames)
        return;
    const float rest = restOf(suspects);
    std::vector<std::pair<cv::Point, float>> found;
    for (int y = 0; y < suspects.bad.rows; ++y)
        for (int x = 0; x < suspects.bad.cols; ++x)
            if (suspects.bad(y, x) == 0)
                if (const float far = weakness(suspects, {x, y}, rest); far > 0)
                    found.emplace_back(cv::Point(x, y), far);
    for (const auto& [pixel, far] : found)
        suspects.flag(pixel, Weak, far);
}

} // namespace velmo::camera

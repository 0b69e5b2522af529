#include "camera/stages/DenoiseStripes.h"

namespace velmo::camera {
namespace {

constexpr float fNormal = 1.4826F; ///< deviation over the median absolute one

/// Every line less the mean of those up to `reach` before and after it.
void takeOffSmooth(Line& line, int reach, Line& memory)
{
    const int count = static_cast<int>(line.size());
    memory = line;
    double sum = 0;
    int first = 0, next = 0;
    for (int i = 0; i < count; ++i) {
        while (next < std::min(count, i + reach + 1))
            sum += memory[static_cast<std::size_t>(next++)];
        while (first < i - reach)
            sum -= memory[static_cast<std::size_t>(first++)];
        line[static_cast<std::size_t>(i)] -= static_cast<float>(sum / (next - first));
    }
}

} // namespace

void LineMeans::clear(std::size_t lines)
{
    for (int s = 0; s < s32Segments; ++s) {
        sums[s].assign(lines, 0);
        inside[s].assign(lines, 0);
    }
    pixels = {};
}

void LineMeans::average(float unit, int reach)
{
    constexpr float fSegments = s32Segments;
    const std::size_t lines = sums[0].size();
    means.assign(lines, 0);
    doubts.assign(lines, 0);
    for (int s = 0; s < s32Segments; ++s) {
        // With most of it beyond the limit a line is not known any better.
        const float least = 0.5F * static_cast<float>(pixels[s]);
        m_vecSegment.resize(lines);
        for (std::size_t i = 0; i < lines; ++i)
            m_vecSegment[i] = static_cast<float>(sums[s][i]) * unit /
                              std::max({static_cast<float>(inside[s][i]), least, 1.0F});
        if (reach > 0)
            takeOffSmooth(m_vecSegment, reach, m_vecCopy);
        for (std::size_t i = 0; i < lines; ++i) {
            means[i] += m_vecSegment[i];
            doubts[i] += square(m_vecSegment[i]);
        }
    }
    float agreement = 0, doubt = 0;
    for (std::size_t i = 0; i < lines; ++i) {
        agreement += (square(means[i]) - doubts[i]) / (fSegments * (fSegments - 1));
        means[i] /= fSegments;
        doubts[i] = std::max(0.0F, doubts[i] / fSegments - square(means[i])) / (fSegments - 1);
        doubt += doubts[i];
    }
    common = std::max(0.0F, agreement / static_cast<float>(lines));
    // Four values are few for a variance: none is taken for better than the mean one.
    for (float& value : doubts)
        value = std::max(value, doubt / static_cast<float>(lines));
}

void LineMeans::shrink(float deviation, float trust, Line& stripes)
{
    const float likely = std::min(common, 2 * square(deviation));
    m_vecCopy.clear();
    for (const float mean : means)
        m_vecCopy.push_back(std::abs(mean));
    const float largest = 4 * fNormal * quantile(m_vecCopy, 0.5); // beyond that it is an object
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] =
            std::abs(means[i]) > largest ? 0 : means[i] * likely / (likely + doubts[i] + 1e-9F) * trust;
}

float LineMeans::white()
{
    const int lines = static_cast<int>(means.size());
    const auto at = [&](int i) { return means[static_cast<std::size_t>(mirrored(i, lines))]; };
    const auto smooth = [&](int i) { return 0.25F * (at(i - 1) + 2 * at(i) + at(i + 1)); };
    // Second differences of neighbours, and of what is smooth two apart: of white lines of deviation 1.
    constexpr float fFine = 2.44949F, fCoarse = 1.32288F;
    const auto deviation = [&](auto&& difference, float ofWhite) {
        m_vecCopy.clear();
        for (int i = 0; i < lines; ++i)
            m_vecCopy.push_back(std::abs(difference(i)));
        return fNormal * quantile(m_vecCopy, 0.5) / ofWhite;
    };
    const float fine = deviation([&](int i) { return at(i - 1) - 2 * at(i) + at(i + 1); }, fFine);
    const float coarse =
        deviation([&](int i) { return smooth(i - 2) - 2 * smooth(i) + smooth(i + 2); }, fCoarse);
    const float ratio = coarse / std::max(fine, 1e-6F);
    // Slats and gratings have more in one of the two.
    const float sure = std::clamp(std::min((1.7F - ratio) / 0.4F, (ratio - 0.5F) / 0.25F), 0.0F, 1.0F);
    return sure * std::sqrt(std::min(square(fine), common));
}

void LineMeans::learn(float noise, float most, float share, Line& stripes)
{
    const float faint = square(0.5F * noise), deviation = std::min(white(), most),
                prior = square(deviation) + 1e-9F;
    for (std::size_t i = 0; i < stripes.size(); ++i) {
        // Larger ones are objects.
        const float small = std::max(0.0F, 1 - square(means[i] / (3 * 0.5F * noise)));
        const float usual =
            std::clamp((4 * deviation - std::abs(means[i])) / (1.5F * deviation + 1e-9F), 0.0F, 1.0F);
        const float sure = std::max(faint / (faint + doubts[i]) * small, prior / (prior + doubts[i]) * usual);
        stripes[i] = towards(stripes[i], means[i] * sure, share);
    }
}

} // namespace velmo::camera

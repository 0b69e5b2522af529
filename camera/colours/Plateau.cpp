#include "camera/colours/Plateau.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace velmo::camera {
namespace {

constexpr int s32Values = 65536;
constexpr int s32MostBins = 256;
constexpr double dEven = 0.2; ///< of the palette is shared out evenly

/// Values side by side that share a slope.
struct Bin
{
    int width = 0;
    double density = 0; ///< of pixels, for each of its values; 1 if all values are as frequent
};

class Bins
{
public:
    Bins(const std::vector<float>& shares, ValueRange range)
        : m_s32Values(range.high - range.low + 1), m_s32Count(std::min(m_s32Values, s32MostBins))
    {
        double all = 0;
        int value = 0;
        for (int bin = 0; bin < m_s32Count; ++bin) {
            const int end = static_cast<int>(static_cast<long>(m_s32Values) * (bin + 1) / m_s32Count);
            Bin& each = m_aBins[static_cast<std::size_t>(bin)];
            each.width = end - value;
            for (; value < end; ++value) {
                const int place = range.low + value;
                each.density += shares[static_cast<std::size_t>(place)];
            }
            all += each.density;
        }
        for (Bin& bin : *this)
            bin.density = all > 0 ? bin.density * m_s32Values / (all * bin.width) : 1;
    }

    Bin* begin() { return m_aBins.data(); }
    Bin* end() { return m_aBins.data() + m_s32Count; }
    const Bin* begin() const { return m_aBins.data(); }
    const Bin* end() const { return m_aBins.data() + m_s32Count; }

    /// What lies above a plateau, of all.
    double above(double plateau) const
    {
        double clipped = 0;
        for (const Bin& bin : *this)
            clipped += bin.width * std::max(bin.density - plateau, 0.0);
        return clipped / m_s32Values;
    }

private:
    int m_s32Values;
    int m_s32Count;
    std::array<Bin, s32MostBins> m_aBins;
};

/// Clips the densities, so that with what was clipped shared out evenly none is above the limit.
void clip(Bins& bins, double limit)
{
    double plateau = limit;
    for (int i = 0; i < 20; ++i) // half way each time or better, in practice
        plateau = std::max(limit - bins.above(plateau), 0.0);
    const double evenly = bins.above(plateau);
    for (Bin& bin : bins)
        bin.density = std::min(bin.density, plateau) + evenly;
}

} // namespace

double Plateau::slopeLimit(ValueRange range, double noise)
{
    return std::clamp(dMostNoise * (range.high - range.low) / std::max(noise, 1e-3), 1.0, dMostSlope);
}

const std::vector<unsigned short>& Plateau::places(const Frame& frame, ValueRange range, double noise)
{
    learn(frame, range);
    Bins bins(m_vecShares, range);
    // The even part has slope 1: what the rest may have so that both together stay within the limit.
    clip(bins, (slopeLimit(range, noise) - dEven) / (1 - dEven));
    m_vecPlaces.clear();
    // The first value stands at 0 and the last at 65535: half of the colours of either belong to its other
    // side.
    double place = 0, all = 0;
    const auto slopeOf = [](const Bin& bin) { return dEven + (1 - dEven) * bin.density; };
    for (const Bin& bin : bins)
        all += bin.width * slopeOf(bin);
    all -= (slopeOf(*bins.begin()) + slopeOf(*(bins.end() - 1))) / 2;
    double before = 0;
    for (const Bin& bin : bins)
        for (int value = 0; value < bin.width; ++value) {
            const double slope = slopeOf(bin);
            place += m_vecPlaces.empty() ? 0 : (before + slope) / 2;
            before = slope;
            m_vecPlaces.push_back(
                static_cast<unsigned short>(std::lround(std::min(place / std::max(all, 1e-9), 1.0) * 65535)));
        }
    return m_vecPlaces;
}

void Plateau::learn(const Frame& frame, ValueRange range)
{
    m_vecCounts.assign(s32Values, 0);
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            ++m_vecCounts[frame[r][c]];
    const auto each = 1 / static_cast<float>(std::max<std::size_t>(frame.total(), 1));
    const bool jumps = m_vecShares.empty() || isAnotherScene(range);
    m_vecShares.resize(s32Values);
    const float share = jumps ? 1 : static_cast<float>(RangeRule::dGlide);
    for (std::size_t value = 0; value < m_vecShares.size(); ++value)
        m_vecShares[value] += share * (static_cast<float>(m_vecCounts[value]) * each - m_vecShares[value]);
}

bool Plateau::isAnotherScene(ValueRange range) const
{
    constexpr double dSameScene = 0.5; // what both histograms have in common
    const int width = std::max(1, (range.high - range.low) / 32);
    const double pixels = std::accumulate(m_vecCounts.begin(), m_vecCounts.end(), 0.0);
    double common = 0;
    for (int begin = 0; begin < s32Values; begin += width) {
        const auto from = static_cast<std::ptrdiff_t>(begin);
        const auto to = static_cast<std::ptrdiff_t>(std::min(begin + width, s32Values));
        const double now = std::accumulate(m_vecCounts.begin() + from, m_vecCounts.begin() + to, 0U);
        const double known = std::accumulate(m_vecShares.begin() + from, m_vecShares.begin() + to, 0.0F);
        common += std::min(now / std::max(pixels, 1.0), known);
    }
    return common < dSameScene;
}

} // namespace velmo::camera

#include "camera/stages/DenoiseNoise.h"

#include "camera/stages/DenoiseKernel.h"

namespace velmo::camera {
namespace {

constexpr int s32Blocks = 480;   ///< so many, in rows, stand for all
constexpr int s32LineMargin = 8; ///< of floats on both sides of a line

} // namespace

int everyNoiseBlockRow(int rows, int columns)
{
    return std::max(1, rows / s32NoiseBlock * (columns / s32NoiseBlock) / s32Blocks);
}

/// The energies of the blocks from this row on, in two octaves.
void OctaveNoiseMeter::addBlocks(const float* picture, int rows, int columns, int row)
{
    // Deviations of the bands where the picture is white noise of deviation 1.
    constexpr float fFine = 0.375F, fCoarse = 0.109375F, fEdges = 0.137109F;
    constexpr int reach = 3, lines = s32NoiseBlock + 2 * reach; // of the first octave, of the second two less
    const int stride = columns + 2 * s32LineMargin;
    m_vecLines.resize(static_cast<std::size_t>(4 * lines + 5) * static_cast<std::size_t>(stride));
    const auto lineOf = [&](int set, int index) {
        return m_vecLines.data() + std::ptrdiff_t{set * lines + index} * stride + s32LineMargin;
    };
    enum : int
    {
        Low,
        High,
        Low2,
        High2,
        Other
    };
    float *work = lineOf(Other, 0), *fine = lineOf(Other, 1), *coarse = lineOf(Other, 2),
          *edges = lineOf(Other, 3), *unused = lineOf(Other, 4);
    for (float* sums : {fine, coarse, edges, unused})
        std::fill_n(sums, columns, 0.0F);
    for (int i = 0; i < lines; ++i) {
        std::copy_n(picture + std::ptrdiff_t{mirrored(row + i - reach, rows)} * columns, columns, work);
        mirrorEnds(work, columns, 1);
        splitAcross(work, 1, lineOf(Low, i), lineOf(High, i), columns);
    }
    for (int i = reach; i < reach + s32NoiseBlock; ++i)
        splitDown(lineOf(High, i - 1), lineOf(High, i), lineOf(High, i + 1), nullptr, fine, columns);
    for (int i = 1; i < lines - 1; ++i) {
        splitDown(lineOf(Low, i - 1), lineOf(Low, i), lineOf(Low, i + 1), work, unused, columns);
        mirrorEnds(work, columns, 2);
        splitAcross(work, 2, lineOf(Low2, i), lineOf(High2, i), columns);
    }
    for (int i = reach; i < reach + s32NoiseBlock; ++i) {
        splitDown(lineOf(Low2, i - 2), lineOf(Low2, i), lineOf(Low2, i + 2), nullptr, edges, columns);
        splitDown(lineOf(High2, i - 2), lineOf(High2, i), lineOf(High2, i + 2), work, coarse, columns);
        for (int c = 0; c < columns; ++c)
            edges[c] += square(work[c]);
    }
    for (int left = 0; left + s32NoiseBlock <= columns; left += s32NoiseBlock) {
        float x = 0, y = 0, z = 0;
        for (int c = left; c < left + s32NoiseBlock; ++c) {
            x += fine[c];
            y += coarse[c];
            z += edges[c];
        }
        constexpr float fPixels = s32NoiseBlock * s32NoiseBlock;
        y /= fPixels * square(fCoarse);
        m_vecBlocks.push_back({x / (fPixels * square(fFine)), y, z / (fPixels * square(fEdges)) + y});
    }
}

OctaveNoise OctaveNoiseMeter::of(const float* picture, int rows, int columns)
{
    m_vecBlocks.clear();
    const int step = s32NoiseBlock * everyNoiseBlockRow(rows, columns);
    for (int row = 0; row + s32NoiseBlock <= rows; row += step)
        addBlocks(picture, rows, columns, row);
    const auto calm =
        m_vecBlocks.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(1, m_vecBlocks.size() / 10));
    std::nth_element(m_vecBlocks.begin(), calm - 1, m_vecBlocks.end(),
                     [](const Block& left, const Block& right) { return left.structure < right.structure; });
    float fine = 0, coarse = 0;
    for (auto block = m_vecBlocks.begin(); block != calm; ++block) {
        fine += block->fine;
        coarse += block->coarse;
    }
    const auto count = static_cast<float>(calm - m_vecBlocks.begin());
    constexpr float fSelected = 0.58F;                    // those with the least have so much of the mean
    constexpr float fNoiseRatio = 1.75F, fSceneRatio = 4; // coarse to fine, of slow noise and of scenes
    fine /= count;
    coarse /= count * fSelected;
    OctaveNoise noise;
    noise.deviation =
        std::sqrt(std::clamp((fSceneRatio * fine - coarse) / (fSceneRatio - fNoiseRatio), 0.0F, fine));
    noise.most = std::sqrt(std::max(fine, coarse));
    const float ratio = coarse / std::max(fine, 1e-6F);
    // Where even the calmest places have as much more as a scene has, most of it is one, whatever is left.
    noise.sure = std::clamp((2.75F - ratio) / 0.75F, 0.0F, 1.0F);
    noise.ratio = std::max(1.0F, std::min(ratio, 2 * fNoiseRatio - ratio));
    return noise;
}

} // namespace velmo::camera

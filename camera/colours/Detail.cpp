#include "camera/colours/Detail.h"

#include "core/Clones.h"

#include <algorithm>
#include <cmath>

namespace velmo::camera {
namespace {

constexpr int s32Side = 4; ///< of a block
constexpr float fPixels = s32Side * s32Side;

/// How far above its expectation the variance of nothing but noise hardly ever is, in a box.
constexpr float fByChance = 2;

/// The mean of a block and its neighbours.
void boxMean(const cv::Mat_<float>& in, cv::Mat_<float>& out)
{
    out.create(in.size());
    for (int y = 0; y < in.rows; ++y)
        for (int x = 0; x < in.cols; ++x) {
            const int top = std::max(y - 1, 0), bottom = std::min(y + 1, in.rows - 1);
            const int left = std::max(x - 1, 0), right = std::min(x + 1, in.cols - 1);
            float sum = 0;
            for (int r = top; r <= bottom; ++r)
                for (int c = left; c <= right; ++c)
                    sum += in[r][c];
            out[y][x] = sum / static_cast<float>((bottom - top + 1) * (right - left + 1));
        }
}

/// Between which two blocks a pixel lies, and how far it is from the first.
struct Between
{
    Between(int pixel, int blocks)
    {
        const float at = std::clamp((static_cast<float>(pixel) + 0.5F) / s32Side - 0.5F, 0.0F,
                                    static_cast<float>(blocks - 1));
        first = static_cast<int>(at);
        second = std::min(first + 1, blocks - 1);
        part = at - static_cast<float>(first);
    }

    int first;
    int second;
    float part;
};

/// A row of blocks, a value for each column of pixels.
void spread(const float* row, int blocks, std::vector<float>& line)
{
    for (std::size_t c = 0; c < line.size(); ++c) {
        const Between at(static_cast<int>(c), blocks);
        line[c] = row[at.first] + at.part * (row[at.second] - row[at.first]);
    }
}

VELMO_CLONES void addDetail(const unsigned short* __restrict in, unsigned short* __restrict out, int count,
                            float level, float part, const float* __restrict slopes,
                            const float* __restrict nextSlopes, const float* __restrict offsets,
                            const float* __restrict nextOffsets)
{
    for (int c = 0; c < count; ++c) {
        const float value = static_cast<float>(in[c]);
        const float slope = slopes[c] + part * (nextSlopes[c] - slopes[c]);
        const float offset = offsets[c] + part * (nextOffsets[c] - offsets[c]);
        const float more = value + (slope * (value - level) - offset);
        const float inside = more < 0 ? 0 : more > 65535.0F ? 65535.0F : more;
        out[c] = static_cast<unsigned short>(static_cast<int>(inside + 0.5F));
    }
}

} // namespace

void Detail::apply(const Frame& frame, double noise, double edge, Frame& out)
{
    out.create(frame.size());
    if (frame.empty())
        return;
    measure(frame);
    decide(noise, edge);
    amplify(frame, out);
}

void Detail::measure(const Frame& frame)
{
    const cv::Size blocks((frame.cols + s32Side - 1) / s32Side, (frame.rows + s32Side - 1) / s32Side);
    m_oMeans.create(blocks);
    m_oSquares.create(blocks);
    const cv::Point middle(frame.cols / 2, frame.rows / 2);
    m_fLevel = frame(middle);
    for (int y = 0; y < blocks.height; ++y)
        for (int x = 0; x < blocks.width; ++x) {
            const int bottom = std::min((y + 1) * s32Side, frame.rows);
            const int right = std::min((x + 1) * s32Side, frame.cols);
            float sum = 0, squares = 0;
            for (int r = y * s32Side; r < bottom; ++r)
                for (int c = x * s32Side; c < right; ++c) {
                    const float value = static_cast<float>(frame[r][c]) - m_fLevel;
                    sum += value;
                    squares += value * value;
                }
            const auto count = static_cast<float>((bottom - y * s32Side) * (right - x * s32Side));
            m_oMeans[y][x] = sum / count;
            m_oSquares[y][x] = squares / count;
        }
}

void Detail::decide(double noise, double edge)
{
    const auto ofNoise = static_cast<float>(noise * noise), ofEdges = static_cast<float>(edge * edge);
    const auto more = static_cast<float>(m_dMost - 1);
    // What is finer than a block, but for what a slope makes of it.
    m_oFine.create(m_oMeans.size());
    for (int y = 0; y < m_oMeans.rows; ++y)
        for (int x = 0; x < m_oMeans.cols; ++x) {
            const int top = std::max(y - 1, 0), bottom = std::min(y + 1, m_oMeans.rows - 1);
            const int left = std::max(x - 1, 0), right = std::min(x + 1, m_oMeans.cols - 1);
            const float down =
                (m_oMeans[bottom][x] - m_oMeans[top][x]) / (s32Side * std::max(bottom - top, 1));
            const float across =
                (m_oMeans[y][right] - m_oMeans[y][left]) / (s32Side * std::max(right - left, 1));
            constexpr float ofSlope = (fPixels - 1) / 12; // the variance of 0, 1, 2, 3
            const float mean = m_oMeans[y][x];
            m_oFine[y][x] =
                std::max(0.0F, m_oSquares[y][x] - mean * mean - ofSlope * (down * down + across * across));
        }
    boxMean(m_oMeans, m_oSlopesHere);
    boxMean(m_oSquares, m_oOffsetsHere);
    boxMean(m_oFine, m_oSquares);
    for (int y = 0; y < m_oMeans.rows; ++y)
        for (int x = 0; x < m_oMeans.cols; ++x) {
            const float mean = m_oSlopesHere[y][x];
            const float variance = std::max(0.0F, m_oOffsetsHere[y][x] - mean * mean);
            // 1 where there is an edge; a flat frame may have a range without one.
            const float keeps = variance > 0 ? variance / (variance + ofEdges) : 0;
            const float fine = m_oSquares[y][x];
            const float gain = fine > 0 ? more * std::max(0.0F, 1 - fByChance * ofNoise / fine) : 0;
            // base = keeps v + (1 - keeps) mean; gain times what it leaves of v.
            m_oSlopesHere[y][x] = gain * (1 - keeps);
            m_oOffsetsHere[y][x] = gain * (1 - keeps) * mean;
        }
    boxMean(m_oSlopesHere, m_oSlopes);
    boxMean(m_oOffsetsHere, m_oOffsets);
}

void Detail::amplify(const Frame& frame, Frame& out)
{
    for (std::vector<float>& line : m_vecLines)
        line.resize(static_cast<std::size_t>(frame.cols));
    int spreadFor = -1;
    for (int r = 0; r < frame.rows; ++r) {
        const Between at(r, m_oSlopes.rows);
        if (at.first != spreadFor) {
            spreadFor = at.first;
            spread(m_oSlopes[at.first], m_oSlopes.cols, m_vecLines[0]);
            spread(m_oSlopes[at.second], m_oSlopes.cols, m_vecLines[1]);
            spread(m_oOffsets[at.first], m_oOffsets.cols, m_vecLines[2]);
            spread(m_oOffsets[at.second], m_oOffsets.cols, m_vecLines[3]);
        }
        addDetail(frame[r], out[r], frame.cols, m_fLevel, at.part, m_vecLines[0].data(), m_vecLines[1].data(),
                  m_vecLines[2].data(), m_vecLines[3].data());
    }
}

} // namespace velmo::camera

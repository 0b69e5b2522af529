#include "vision/kernels/StaticPatternRemoverKernel.h"

#include <algorithm>
#include <cstdlib>

namespace velmo::exp::vision {
namespace {

/// Sum of the eight neighbours of one of the two sets, and how far the nine values of the set lie from the
/// mean of those eight.
struct Surroundings
{
    explicit Surroundings(const PatternParameters& parameters)
        : low(parameters.minStart), high(parameters.maxStart)
    {}

    int sum = 0;
    int low;
    int high;

    void include(int value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }

    void add(int value)
    {
        sum += value;
        include(value);
    }

    int deviation() const { return std::max(std::abs(low - (sum >> 3)), std::abs(high - (sum >> 3))); }
};

int offset(short value)
{
    return value + 32768;
}

Surroundings block(const cv::Mat_<short>& in, int r, int c, const PatternParameters& parameters)
{
    const int above = std::max(r - 1, 0), below = std::min(r + 1, in.rows - 1);
    const int left = std::max(c - 1, 0), right = std::min(c + 1, in.cols - 1);
    Surroundings set(parameters);
    for (const int row : {above, below})
        for (const int column : {left, c, right})
            set.add(offset(in[row][column]));
    set.add(offset(in[r][left]));
    set.add(offset(in[r][right]));
    set.include(offset(in[r][c]));
    return set;
}

Surroundings line(const cv::Mat_<short>& in, int r, int c, const PatternParameters& parameters)
{
    Surroundings set(parameters);
    for (int n = 1; n <= 4; ++n) {
        set.add(offset(in[r][std::max(c - n, 0)]));
        set.add(offset(in[r][std::min(c + n, in.cols - 1)]));
    }
    set.include(offset(in[r][c]));
    return set;
}

int columnCorrection(int state)
{
    return (state >> 10) + (state < 0 ? 1 : 0);
}

int pixelCorrection(int state)
{
    return (state >> 5) + (state < 0 ? 1 : 0);
}

/// The sum of the set that the pixel is compared with, less what the columns' corrections make of it.
int estimate(const cv::Mat_<int>& columnState, int c, const Surroundings& ofBlock, const Surroundings& ofLine,
             int threshold)
{
    const int* states = columnState[0];
    const int last = columnState.cols - 1;
    const int centre = columnCorrection(states[c]);
    const int blockCorrection = 3 * columnCorrection(states[std::max(c - 1, 0)]) - 6 * centre +
                                3 * columnCorrection(states[std::min(c + 1, last)]);
    int lineCorrection = -8 * centre;
    for (int n = 1; n <= 4; ++n)
        lineCorrection +=
            columnCorrection(states[std::max(c - n, 0)]) + columnCorrection(states[std::min(c + n, last)]);

    const int blockEstimate = ofBlock.sum - patternCounts(blockCorrection);
    const int lineEstimate = ofLine.sum - patternCounts(lineCorrection);
    if (std::abs(ofLine.deviation() - ofBlock.deviation()) < (threshold >> 2))
        return (blockEstimate + lineEstimate) >> 1;
    return ofLine.deviation() < ofBlock.deviation() ? lineEstimate : blockEstimate;
}

int limitPixelState(int state, int limit)
{
    if ((state >> 8) >= limit)
        state = limit * 256;
    else if ((state >> 8) <= -limit - 1)
        state = (-limit - 1) * 256 + 255;
    return state > 0 ? state - 1 : state < 0 ? state + 1 : 0;
}

int limitColumnState(int state, int limit)
{
    if ((state >> 13) >= limit)
        state = limit * 8192;
    else if ((state >> 13) <= -limit - 1)
        state = (-limit - 1) * 8192 + 8191;
    // Also takes -3, -2, -1 to 1, 2, 3, where they stay.
    return state >= 4 ? state - 4 : state < 0 ? state + 4 : state;
}

void removeFromPixel(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                     cv::Mat_<int>& pixelState, int r, int c, const PatternParameters& parameters)
{
    int column = columnState[0][c], pixel = pixelState[r][c];
    const int columnPart = columnCorrection(column), pixelPart = pixelCorrection(pixel);
    const short x = in[r][c];
    out[r][c] = x == 32767 ? x : static_cast<short>(x - patternCounts(columnPart) - patternCounts(pixelPart));

    const Surroundings ofBlock = block(in, r, c, parameters), ofLine = line(in, r, c, parameters);
    const int blockDeviation = ofBlock.deviation(), lineDeviation = ofLine.deviation();

    if (std::min(blockDeviation, lineDeviation) < parameters.threshold)
        pixel += 8 * offset(x) - pixelPart - estimate(columnState, c, ofBlock, ofLine, parameters.threshold);
    pixelState[r][c] = limitPixelState(pixel, parameters.frameLimit);

    if (blockDeviation < parameters.thresholdLow || lineDeviation < parameters.threshold) {
        const bool calmLine = lineDeviation - (lineDeviation >> 2) - (lineDeviation >> 4) <= blockDeviation;
        column += 8 * offset(x) - columnPart - (calmLine ? ofLine.sum : ofBlock.sum);
    }
    columnState[0][c] = limitColumnState(column, parameters.lineLimit);
}

} // namespace

void removeStaticPatternPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                              cv::Mat_<int>& pixelState, const PatternParameters& parameters,
                              std::vector<short>& /*scratch*/)
{
    for (int r = 0; r < in.rows; ++r)
        for (int c = 0; c < in.cols; ++c)
            removeFromPixel(in, out, columnState, pixelState, r, c, parameters);
}

} // namespace velmo::exp::vision

#include "vision/imgproc/BadPixel.h"
#include "vision/kernels/BadPixelKernel.h"

namespace velmo::exp::vision {
namespace {

float meanOf(const cv::Mat_<short>& frame)
{
    float sum = 0;
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            sum += static_cast<float>(frame(r, c));
    return sum / static_cast<float>(frame.total());
}

} // namespace

unsigned long flagSpreadPlain(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount)
{
    const float scale = spreadScale(meanOf(frame));
    SpreadBins bins{};
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c) {
            const int bin = spreadBin(static_cast<float>(frame(r, c)), scale);
            if (bin >= 0 && bin < static_cast<int>(spreadBinCount))
                ++bins[static_cast<std::size_t>(bin)];
        }

    const SpreadLimits limits = spreadLimits(bins, minCount);
    if (limits.bNone)
        return 0;
    unsigned long count = 0;
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c) {
            const int bin = spreadBin(static_cast<float>(frame(r, c)), scale);
            if (bin < limits.low || bin > limits.high) {
                map(r, c) |= static_cast<int>(BadPixelTools::u32BadHomogenity);
                ++count;
            }
        }
    return count;
}

void flagFallenPlain(const short* before, const short* after, int* flags, int count)
{
    for (int n = 0; n < count; ++n)
        if (after[n] <= before[n])
            flags[n] |= static_cast<int>(BadPixelTools::u32BadCurve);
}

unsigned int countBadPlain(const int* flags, unsigned int* perColumn, int count)
{
    unsigned int inRow = 0;
    for (int n = 0; n < count; ++n)
        if (flags[n] > 0) {
            ++perColumn[n];
            ++inRow;
        }
    return inRow;
}

int findBadPlain(const int* flags, int* columns, int count)
{
    int found = 0;
    for (int n = 0; n < count; ++n)
        if (flags[n] != 0)
            columns[found++] = n;
    return found;
}

} // namespace velmo::exp::vision

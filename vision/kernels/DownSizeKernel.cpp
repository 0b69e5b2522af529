#include "vision/kernels/DownSizeKernel.h"

#include "core/Clones.h"
#include "core/Lanes.h"

#include <cstring>

namespace velmo::exp::vision {
namespace {

/// n / 3 toward zero for every |n| below 12,582,914; vectors know no division of integers, and none of the
/// usual multiplications by a scaled third is right for all n.
VELMO_INLINE int third(int n)
{
    return static_cast<int>(static_cast<float>(n) * (1.0f / 3.0f));
}

/// n / 2 toward zero.
VELMO_INLINE int half(int n)
{
    return (n + (n < 0 ? 1 : 0)) >> 1;
}

/// The two thirds of each group of three pixels, apart from each other: they are woven together only once,
/// on the way out.
VELMO_INLINE void narrowToTwoThirds(const short* __restrict in, int* __restrict left, int* __restrict right)
{
    for (int j = 0; j < 80; ++j) {
        const int p = in[3 * j], q = in[3 * j + 1], s = in[3 * j + 2];
        left[j] = third(2 * p + q);
        right[j] = third(q + 2 * s);
    }
}

VELMO_CLONES void threeRowsToTwo(const short* __restrict top, const short* __restrict middle,
                                 const short* __restrict bottom, short* __restrict upper,
                                 short* __restrict lower)
{
    int topLeft[80], topRight[80], middleLeft[80], middleRight[80], bottomLeft[80], bottomRight[80];
    narrowToTwoThirds(top, topLeft, topRight);
    narrowToTwoThirds(middle, middleLeft, middleRight);
    narrowToTwoThirds(bottom, bottomLeft, bottomRight);
    for (int j = 0; j < 80; ++j) {
        upper[2 * j] = static_cast<short>(third(2 * topLeft[j] + middleLeft[j]));
        upper[2 * j + 1] = static_cast<short>(third(2 * topRight[j] + middleRight[j]));
        lower[2 * j] = static_cast<short>(third(middleLeft[j] + 2 * bottomLeft[j]));
        lower[2 * j + 1] = static_cast<short>(third(middleRight[j] + 2 * bottomRight[j]));
    }
}

/// The mean of the two halves of a word: two neighbouring pixels, whose order makes no difference. Taking
/// them apart by shifts spares the shuffling of lanes.
VELMO_INLINE int meanOfPair(const short* pair)
{
    int word;
    std::memcpy(&word, pair, sizeof word);
    return half(static_cast<short>(word) + (word >> 16));
}

VELMO_CLONES void twoRowsToOne(const short* __restrict top, const short* __restrict bottom,
                               short* __restrict out)
{
    for (int x = 0; x < 120; ++x)
        out[x] = static_cast<short>(half(meanOfPair(top + 2 * x) + meanOfPair(bottom + 2 * x)));
}

void resizeToTwoThirdsFast(const cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    for (int k = 0; k < 60; ++k)
        threeRowsToTwo(in[3 * k], in[3 * k + 1], in[3 * k + 2], out[2 * k], out[2 * k + 1]);
}

void resizeToHalfFast(const cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    for (int k = 0; k < 90; ++k)
        twoRowsToOne(in[2 * k], in[2 * k + 1], out[k]);
}

} // namespace

constexpr Forms<Resize> resizeToTwoThirds{"downsizing to 2/3", resizeToTwoThirdsPlain, resizeToTwoThirdsFast};
constexpr Forms<Resize> resizeToHalf{"downsizing to 1/2", resizeToHalfPlain, resizeToHalfFast};

} // namespace velmo::exp::vision

#include "vision/kernels/SpatialNoiseRemoverKernel.h"

#include <algorithm>
#include <cstdlib>

namespace velmo::exp::vision {
namespace {

short smoothPixel(const cv::Mat_<short>& in, int r, int c, int gain)
{
    const short* rows[] = {in[std::max(r - 1, 0)], in[r], in[std::min(r + 1, in.rows - 1)]};
    const int columns[] = {std::max(c - 1, 0), c, std::min(c + 1, in.cols - 1)};
    const int centre = in[r][c] + 32768;
    int sum = 5;
    for (const short* row : rows)
        for (const int column : columns)
            sum += row[column] + 32768;
    // A ninth by shifts, 7/64 * (1 + 1/64 + 1/4096): for some sums it differs from a rounded division.
    const int part = sum - (sum >> 3);
    const int mean = (part + (part >> 6) + (part >> 12)) >> 3;
    int activity = 0;
    for (const short* row : rows)
        for (const int column : columns)
            activity += std::abs(row[column] + 32768 - mean);
    const int keep = std::min(activity / gain + 13, 32);
    return static_cast<short>(((keep * (centre - mean) + 16) >> 5) + mean - 32768);
}

} // namespace

void removeSpatialNoisePlain(const cv::Mat_<short>& in, cv::Mat_<short>& out, int gain)
{
    for (int r = 0; r < in.rows; ++r)
        for (int c = 0; c < in.cols; ++c)
            out[r][c] = smoothPixel(in, r, c, gain);
}

} // namespace velmo::exp::vision

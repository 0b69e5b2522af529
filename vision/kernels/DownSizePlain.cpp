#include "vision/kernels/DownSizeKernel.h"

namespace velmo::exp::vision {

void resizeToTwoThirdsPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    cv::Mat_<short> narrow(180, 160);
    for (int r = 0; r < 180; ++r)
        for (int j = 0; j < 80; ++j) {
            const int p = in[r][3 * j], q = in[r][3 * j + 1], s = in[r][3 * j + 2];
            narrow[r][2 * j] = static_cast<short>((2 * p + q) / 3);
            narrow[r][2 * j + 1] = static_cast<short>((q + 2 * s) / 3);
        }
    for (int k = 0; k < 60; ++k)
        for (int x = 0; x < 160; ++x) {
            const int u = narrow[3 * k][x], v = narrow[3 * k + 1][x], w = narrow[3 * k + 2][x];
            out[2 * k][x] = static_cast<short>((2 * u + v) / 3);
            out[2 * k + 1][x] = static_cast<short>((v + 2 * w) / 3);
        }
}

void resizeToHalfPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    cv::Mat_<short> narrow(180, 120);
    for (int r = 0; r < 180; ++r)
        for (int j = 0; j < 120; ++j)
            narrow[r][j] = static_cast<short>((in[r][2 * j] + in[r][2 * j + 1]) / 2);
    for (int k = 0; k < 90; ++k)
        for (int x = 0; x < 120; ++x)
            out[k][x] = static_cast<short>((narrow[2 * k][x] + narrow[2 * k + 1][x]) / 2);
}

} // namespace velmo::exp::vision

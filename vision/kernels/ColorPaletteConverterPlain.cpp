#include "vision/kernels/ColorPaletteConverterKernel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <climits>
#include <utility>

namespace velmo::vision {

void palettizePlain(const unsigned short* in, unsigned char* out, std::size_t count,
                    const unsigned int* table)
{
    for (std::size_t n = 0; n < count; ++n) {
        const auto* entry = reinterpret_cast<const unsigned char*>(table + in[n]);
        out[3 * n] = entry[0];
        out[3 * n + 1] = entry[1];
        out[3 * n + 2] = entry[2];
    }
}

Entries stretchByResize(const std::vector<unsigned char>& palette, int span, bool bgr, Entries memory)
{
    const auto size = static_cast<int>(std::min<std::size_t>(palette.size(), INT_MAX));
    const cv::Mat bytes(1, size, CV_8UC1, const_cast<unsigned char*>(palette.data()));
    cv::Mat row;
    cv::resize(bytes.reshape(3), row, cv::Size(span, 1), 0, 0, cv::INTER_LINEAR);
    Entries entries = std::move(memory);
    entries.clear();
    entries.reserve(static_cast<std::size_t>(span));
    for (const auto& e : cv::Mat_<cv::Vec3b>(row))
        entries.push_back(bgr ? packEntry(e[2], e[1], e[0], 0) : packEntry(e[0], e[1], e[2], 0));
    return entries;
}

void fillTablePlain(unsigned int* table, const unsigned int* stretched, int min, int max)
{
    unsigned int color = stretched[0];
    for (int v = 0; v < tableEntries; ++v) {
        if (v >= min && v < max)
            color = stretched[v - min];
        table[v] = color;
    }
}

void fillTableHumidPlain(unsigned int* table, const unsigned int* stretched, const float* moisture)
{
    for (int v = 0; v < tableEntries; ++v)
        table[v] = stretched[humidityStep(moisture[v])];
}

} // namespace velmo::vision

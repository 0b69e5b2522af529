#include "camera/lens/LensMap.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace velmo::camera {
namespace {

using vision::PixelCorrInfo;
using MapPixel = cv::Vec<unsigned short, 6>;

constexpr int unity = 32768;

/// Weights of the pixel to the left and above, and of its right, lower and lower right neighbours.
std::array<int, 4> bilinearWeights(double right, double down)
{
    std::array<int, 4> weights{};
    weights[1] = static_cast<int>(std::lround(right * (1 - down) * unity));
    weights[2] = static_cast<int>(std::lround((1 - right) * down * unity));
    weights[3] = static_cast<int>(std::lround(right * down * unity));
    weights[0] = std::max(0, unity - weights[1] - weights[2] - weights[3]); // the sum to the last bit
    return weights;
}

/// A source, moved to the edge if it lies outside the frame. Not a number: that happens far outside too.
double within(double coordinate, int length)
{
    return coordinate > 0 ? std::min(coordinate, length - 1.0) : 0.0;
}

MapPixel mapPixel(const LensModel& lens, cv::Size size, int row, int col)
{
    const cv::Point2d source = lens.source(cv::Point2d(col, row));
    const double x = within(source.x, size.width), y = within(source.y, size.height);
    const int left = static_cast<int>(x), top = static_cast<int>(y);
    const int dy = top - row, dx = left - col;
    const std::int64_t offset = std::int64_t{dy} * size.width + dx;
    if (offset < INT16_MIN || offset > INT16_MAX)
        VELMO_THROW("the source of pixel " + std::to_string(col) + "," + std::to_string(row) + " is " +
                    std::to_string(dy) + " rows away; a map " + std::to_string(size.width) +
                    " pixels wide can say at most " + std::to_string(INT16_MAX / size.width));
    const std::array<int, 4> weights = bilinearWeights(x - left, y - top);
    const auto bits = [](int value) { return static_cast<unsigned short>(value); };
    return {bits(dy), bits(dx), bits(weights[0]), bits(weights[1]), bits(weights[2]), bits(weights[3])};
}

unsigned short blend(const Frame& frame, cv::Point source, const PixelCorrInfo& record)
{
    const int right = std::min(source.x + 1, frame.cols - 1), below = std::min(source.y + 1, frame.rows - 1);
    const unsigned short values[] = {frame(source.y, source.x), frame(source.y, right),
                                     frame(below, source.x), frame(below, right)};
    std::uint64_t sum = 0, weights = 0;
    for (int k = 0; k < 4; ++k) {
        sum += std::uint64_t{values[k]} * record.m_au16Weights[k];
        weights += record.m_au16Weights[k];
    }
    return weights == 0 ? values[0] : static_cast<unsigned short>((sum + weights / 2) / weights);
}

} // namespace

LensModel LensModel::parse(const std::string& text, const std::string& what)
{
    constexpr Field::Kind number = Field::Kind::Number;
    const Form form = {{"K1", number, -100, 100},     {"K2", number, -100, 100},
                       {"FX", number, 1, 1e6},        {"FY", number, 1, 1e6},
                       {"CX", number, -16384, 16384}, {"CY", number, -16384, 16384}};
    const std::vector<double> values = parseForm(text, what, form, ',');
    return {values[0], values[1], values[2], values[3], values[4], values[5]};
}

cv::Point2d LensModel::source(cv::Point2d corrected) const
{
    const double x = (corrected.x - cx) / fx, y = (corrected.y - cy) / fy;
    const double r2 = x * x + y * y;
    const double bend = 1 + k1 * r2 + k2 * r2 * r2;
    return {cx + fx * x * bend, cy + fy * y * bend};
}

cv::Mat makeLensMap(const LensModel& lens, cv::Size size)
{
    cv::Mat_<MapPixel> map(size);
    for (int r = 0; r < size.height; ++r)
        for (int c = 0; c < size.width; ++c)
            map(r, c) = mapPixel(lens, size, r, c);
    return std::move(map);
}

Frame undistorted(const Frame& frame, const vision::DistortionCorrection& map)
{
    const std::vector<PixelCorrInfo>& records = map.getPixelCorrInfo();
    if (records.size() != frame.total())
        VELMO_THROW("the map has " + std::to_string(records.size()) + " pixels, the frame " +
                    std::to_string(frame.total()));
    Frame corrected(frame.size());
    int index = 0;
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c, ++index) {
            const PixelCorrInfo& record = records[static_cast<std::size_t>(index)];
            const int source = index + record.m_s16Offset;
            if (source < 0 || source >= frame.rows * frame.cols)
                VELMO_THROW("the map takes pixel " + std::to_string(c) + "," + std::to_string(r) +
                            " from outside the frame");
            corrected(r, c) = blend(frame, {source % frame.cols, source / frame.cols}, record);
        }
    return corrected;
}

} // namespace velmo::camera

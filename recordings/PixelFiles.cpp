#include "recordings/PixelFiles.h"

#include "apps/thermal/Error.h"
#include "recordings/PartialPath.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace thermal {
namespace {

using velmo::exp::Exception;
using velmo::exp::vision::BadPixel;
using velmo::exp::vision::BadPixelTools;

/// Writes a whole file or none.
void writeFile(const std::string& path, const std::string& bytes)
{
    PartialPath partial(path);
    std::ofstream file(partial.path(), std::ios::binary);
    file << bytes;
    file.close();
    if (!file)
        throw UsageError(path + ": cannot be written");
    partial.keep();
}

/// A binary PGM of 16 bits; the picture libraries write none without rows, which is how no record looks.
template <class T>
std::string pgm(const cv::Mat_<T>& image)
{
    std::string bytes = "P5\n" + std::to_string(image.cols) + " " + std::to_string(image.rows) + "\n65535\n";
    for (int r = 0; r < image.rows; ++r)
        for (int c = 0; c < image.cols; ++c) {
            const auto value = static_cast<unsigned short>(image(r, c));
            bytes += static_cast<char>(value >> 8);
            bytes += static_cast<char>(value & 0xff);
        }
    return bytes;
}

} // namespace

const std::vector<PixelReason>& pixelReasons()
{
    static const std::vector<PixelReason> reasons = {
        {"spread", BadPixelTools::u32BadHomogenity, {60, 60, 255}},
        {"rows and columns", BadPixelTools::u32BadRowCol, {0, 220, 255}},
        {"monotony", BadPixelTools::u32BadCurve, {255, 80, 255}},
        {"netd", BadPixelTools::u32BadNetd, {255, 200, 0}}};
    return reasons;
}

std::string reasonsOf(int flags)
{
    std::string names;
    for (const PixelReason& reason : pixelReasons())
        if (static_cast<unsigned>(flags) & reason.flag)
            names += (names.empty() ? "" : "+") + std::string(reason.name);
    return names.empty() ? std::to_string(flags) : names;
}

PixelMap readPixelMap(const std::string& path)
{
    velmo::exp::ImageDecoderPxM decoder;
    cv::Mat image;
    try {
        if (!decoder.open(path))
            throw UsageError(path + ": not a readable PGM map");
        decoder.grab(image, nullptr);
    } catch (const Exception& error) {
        throw UsageError(path + ": " + error.what());
    }
    if (image.channels() != 1 || image.empty())
        throw UsageError(path + ": not a map: it has " + std::to_string(image.channels()) + " channels and " +
                         std::to_string(image.total()) + " pixels");
    PixelMap map;
    image.convertTo(map, CV_32S);
    return map;
}

void writePixelMap(const std::string& path, const PixelMap& map)
{
    writeFile(path, pgm(map));
}

std::vector<BadPixel> readRecords(const std::string& path)
{
    try {
        return BadPixelTools::loadBadPixelFromPxm(path);
    } catch (const Exception& error) {
        throw UsageError(path + ": " + error.what());
    }
}

void writeRecords(const std::string& path, const std::vector<BadPixel>& records)
{
    writeFile(path, pgm(cv::Mat_<short>(BadPixelTools::convertBadPixelToPxmFormat(records))));
}

void writePixelList(const std::string& path, const PixelMap& map)
{
    std::ostringstream text;
    text << "x,y,flags,reasons\n";
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (map(y, x) != 0)
                text << x << ',' << y << ',' << map(y, x) << ',' << reasonsOf(map(y, x)) << '\n';
    writeFile(path, text.str());
}

} // namespace thermal

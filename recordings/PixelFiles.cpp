#include "recordings/PixelFiles.h"

#include "camera/pixels/Replacements.h"
#include "camera/settings/Parse.h"
#include "recordings/ByteFile.h"
#include "recordings/FileList.h"
#include "recordings/Frames.h"
#include "recordings/GreyWriters.h"
#include "recordings/PngFile.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <iterator>

namespace velmo::recordings {
namespace {

using camera::PixelMap;
using exp::Exception;
using exp::vision::BadPixel;
using exp::vision::BadPixelTools;

/// A file of records is ten columns wide, as no frame is, and may have no row.
bool areRecords(const std::string& path)
{
    exp::ImageDecoderPxM decoder;
    cv::Mat image;
    if (!decoder.open(path))
        return false;
    try {
        decoder.grab(image, nullptr);
    } catch (const Exception&) {
        return false; // whoever reads it says why
    }
    return image.empty() || image.cols == 10;
}

PixelMap readList(const std::string& path, cv::Size size)
{
    if (size.empty())
        VELMO_THROW(path + ": a list of pixels does not say how large frames are");
    std::ifstream file = openStream(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    try {
        return camera::parsePixelList(text, size);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

PixelMap readImage(const std::string& path)
{
    const std::string ending = endingOf(path);
    if (ending == ".pgm" || ending == ".pnm" || ending == ".pam")
        return readPixelMap(path);
    Frame frame;
    openFrames({path}, {})->next(frame);
    return PixelMap(frame);
}

} // namespace

cv::Mat_<int> readPixelMap(const std::string& path)
{
    exp::ImageDecoderPxM decoder;
    if (!decoder.open(path))
        VELMO_THROW(path + ": not a readable PGM map");
    cv::Mat image;
    try {
        decoder.grab(image, nullptr);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
    if (image.channels() != 1 || image.empty())
        VELMO_THROW(path + ": not a map: it has " + std::to_string(image.channels()) + " channels and " +
                    std::to_string(image.total()) + " pixels");
    cv::Mat_<int> map;
    image.convertTo(map, CV_32S);
    return map;
}

void writePixelMap(OutputFile file, const cv::Mat_<int>& map)
{
    cv::Mat_<unsigned short> flags;
    map.convertTo(flags, CV_16U);
    writePgm(std::move(file), flags, "");
}

std::vector<BadPixel> readRecords(const std::string& path)
{
    try {
        return BadPixelTools::loadBadPixelFromPxm(path);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

void writeRecords(OutputFile file, const std::vector<BadPixel>& records)
{
    // Signed values are kept as their 16-bit patterns.
    const cv::Mat_<short> values = BadPixelTools::convertBadPixelToPxmFormat(records);
    writePgm(std::move(file), cv::Mat(values.size(), CV_16U, values.data, values.step), "");
}

PixelMap readAnyMap(const std::string& path, cv::Size size)
{
    PixelMap map = endingOf(path) == ".csv" ? readList(path, size) : readImage(path);
    if (!size.empty() && map.size() != size)
        VELMO_THROW(path + ": a map for frames of " + camera::sizeText(map.size()) + ", not of " +
                    camera::sizeText(size));
    int flags = 0;
    for (const camera::PixelReason& reason : camera::pixelReasons())
        flags |= static_cast<int>(reason.flag);
    if (cv::countNonZero(PixelMap(map & ~flags)) > 0)
        map.setTo(static_cast<int>(BadPixelTools::u32BadHomogenity), map != 0);
    return map;
}

void writeAnyMap(Outputs& outputs, const std::string& path, const PixelMap& map)
{
    const std::string ending = endingOf(path);
    if (ending == ".pgm") {
        writePixelMap(outputs.file(path), map);
    } else if (ending == ".csv") {
        OutputFile file = outputs.file(path);
        file.write(camera::pixelList(map));
        file.finish();
    } else if (ending == ".png") {
        Frame mask(map.size(), static_cast<unsigned short>(0));
        mask.setTo(65535, map != 0);
        writePng(outputs.file(path), mask);
    } else if (ending == ".npy") {
        Frame flags;
        map.convertTo(flags, CV_16U);
        const auto file = createNpy(outputs.file(path));
        file->write(flags);
        file->finish();
    } else {
        VELMO_THROW("'" + path + "': a map goes to a .pgm, .csv, .png or .npy");
    }
}

std::vector<BadPixel> readReplacements(const std::string& path)
{
    return areRecords(path) ? readRecords(path) : camera::replacementsOf(readAnyMap(path)).records;
}

} // namespace velmo::recordings

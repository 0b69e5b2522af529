#include "apps/thermal/PixelMapFiles.h"

#include "apps/thermal/Error.h"
#include "camera/pixels/Replacements.h"
#include "camera/settings/Parse.h"
#include "recordings/ByteFile.h"
#include "recordings/FileList.h"
#include "recordings/Frames.h"
#include "recordings/GreyWriters.h"
#include "recordings/PixelFiles.h"
#include "recordings/PngFile.h"

#include "core/codecs/ImageDecoderPxM.h"

#include <iterator>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;
using velmo::exp::vision::BadPixel;

namespace {

/// A file of records is ten columns wide, as no frame is, and may have no row.
bool areRecords(const std::string& path)
{
    velmo::exp::ImageDecoderPxM decoder;
    cv::Mat image;
    if (!decoder.open(path))
        return false;
    try {
        decoder.grab(image, nullptr);
    } catch (const velmo::exp::Exception&) {
        return false; // whoever reads it says why
    }
    return image.empty() || image.cols == 10;
}

PixelMap readList(const std::string& path, cv::Size size)
{
    if (size.empty())
        throw UsageError(path +
                         ": a list of pixels does not say how large frames are: name it with --size WxH");
    std::ifstream file = openStream(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    try {
        return parsePixelList(text, size);
    } catch (const velmo::exp::Exception& error) {
        throw UsageError(path + ": " + error.what());
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

PixelMap readAnyMap(const std::string& path, cv::Size size)
{
    PixelMap map = endingOf(path) == ".csv" ? readList(path, size) : readImage(path);
    if (!size.empty() && map.size() != size)
        throw UsageError(path + ": a map for frames of " + sizeText(map.size()) + ", not of " +
                         sizeText(size));
    int flags = 0;
    for (const PixelReason& reason : pixelReasons())
        flags |= static_cast<int>(reason.flag);
    if (cv::countNonZero(PixelMap(map & ~flags)) > 0)
        map.setTo(static_cast<int>(velmo::exp::vision::BadPixelTools::u32BadHomogenity), map != 0);
    return map;
}

void writeAnyMap(Outputs& outputs, const std::string& path, const PixelMap& map)
{
    const std::string ending = endingOf(path);
    if (ending == ".pgm") {
        writePixelMap(outputs.file(path), map);
    } else if (ending == ".csv") {
        OutputFile file = outputs.file(path);
        file.write(pixelList(map));
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
        throw UsageError("'" + path + "': a map goes to a .pgm, .csv, .png or .npy");
    }
}

std::vector<BadPixel> readReplacements(const std::string& path)
{
    return areRecords(path) ? readRecords(path) : replacementsOf(readAnyMap(path)).records;
}

} // namespace thermal

#include "core/codecs/ImageDecoderPxM.h"

#include "core/codecs/PxMHeader.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <vector>

namespace velmo::exp {

/// An open image: the whole file and what its header says.
struct PxMFile
{
    std::vector<std::uint8_t> bytes;
    PxMHeader header;
    std::size_t u64Raster = 0; ///< where the raster begins

    ByteCursor raster() const { return {bytes.data() + u64Raster, bytes.size() - u64Raster}; }
};

namespace {

/// False for what is no file to be read: missing, a folder, a pipe that would block.
bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file || size < 2)
        return false;
    // The first two bytes alone: a long recording handed over by mistake is not read to its end.
    char magic[2];
    if (!file.read(magic, 2) || magic[0] != 'P')
        return false;
    bytes.resize(static_cast<std::size_t>(size));
    std::memcpy(bytes.data(), magic, 2);
    file.read(reinterpret_cast<char*>(bytes.data()) + 2, static_cast<std::streamsize>(size - 2));
    bytes.resize(2 + static_cast<std::size_t>(file.gcount()));
    return !file.bad();
}

std::shared_ptr<const PxMFile> load(const std::string& path)
{
    auto file = std::make_shared<PxMFile>();
    if (!readFile(path, file->bytes))
        return nullptr;
    ByteCursor cursor(file->bytes.data(), file->bytes.size());
    try {
        file->header = readPxMHeader(cursor);
    } catch (const Exception&) {
        return nullptr;
    }
    file->u64Raster = file->bytes.size() - cursor.left();
    return file;
}

cv::Rect checkedRegion(const PxMHeader& header, const cv::Rect* region)
{
    const cv::Rect whole(0, 0, static_cast<int>(header.u32Width), static_cast<int>(header.u32Height));
    if (!region)
        return whole;
    // By subtraction: x + width of a hostile rectangle overflows.
    if (region->x < 0 || region->y < 0 || region->width < 1 || region->height < 1 ||
        region->width > whole.width - region->x || region->height > whole.height - region->y)
        VELMO_THROW("Region " + std::to_string(region->width) + " x " + std::to_string(region->height) +
                    " at x=" + std::to_string(region->x) + " y=" + std::to_string(region->y) +
                    " is not inside the image of " + std::to_string(whole.width) + " x " +
                    std::to_string(whole.height) + "!");
    return *region;
}

/// Before anything is allocated: a header of a few bytes may promise any size.
void checkRasterFits(const PxMHeader& header, std::size_t left)
{
    if (header.rowSamples() == 0)
        return;
    // A number of a text raster takes a digit and, but for the last one, white space.
    const std::uint64_t samples = header.bText ? (std::uint64_t{left} + 1) / 2 : left / header.sampleBytes();
    // By division: width * height wraps to something small.
    if (header.u32Height > samples / header.rowSamples())
        VELMO_THROW("Raster of " + std::to_string(header.u32Height) + " rows of " +
                    std::to_string(header.rowSamples()) + " samples does not fit the file!");
}

cv::Mat allocate(cv::Size size, std::uint32_t channels)
{
    try {
        return cv::Mat(size, CV_MAKETYPE(CV_16U, static_cast<int>(channels)));
    } catch (const std::exception&) { // the matrix library's own error among them
        VELMO_THROW("No memory for an image of " + std::to_string(size.width) + " x " +
                    std::to_string(size.height) + "!");
    }
}

void checkSamples(unsigned highest, const PxMHeader& header)
{
    if (highest > header.u32MaxValue)
        VELMO_THROW("Sample " + std::to_string(highest) + " is above the image's MAXVAL of " +
                    std::to_string(header.u32MaxValue) + "!");
}

void decodeBytes(const std::uint8_t* in, unsigned short* out, std::size_t count, const PxMHeader& header)
{
    unsigned short highest = 0;
    if (header.sampleBytes() == 2)
        for (std::size_t n = 0; n < count; ++n) {
            out[n] = static_cast<unsigned short>(in[2 * n] << 8 | in[2 * n + 1]);
            highest = std::max(highest, out[n]);
        }
    else
        for (std::size_t n = 0; n < count; ++n) {
            out[n] = in[n];
            highest = std::max(highest, out[n]);
        }
    checkSamples(highest, header);
}

void grabBytes(const PxMFile& file, cv::Rect region, cv::Mat& image)
{
    const PxMHeader& header = file.header;
    const std::size_t pixelBytes = header.sampleBytes() * header.u32Channels;
    const std::size_t rowBytes = header.u32Width * pixelBytes;
    ByteCursor raster = file.raster();
    raster.take(static_cast<std::size_t>(region.y) * rowBytes);
    for (int row = 0; row < region.height; ++row)
        decodeBytes(raster.take(rowBytes) + static_cast<std::size_t>(region.x) * pixelBytes,
                    image.ptr<unsigned short>(row),
                    static_cast<std::size_t>(region.width) * header.u32Channels, header);
}

/// The next number of a text raster. Comments have no place there by the format; like the usual tools,
/// this takes one for white space.
std::uint32_t takeSample(ByteCursor& text)
{
    while (isPxMSpace(text.peek()) || text.peek() == '#')
        if (*text.take(1) == '#')
            while (text.peek() != '\n' && text.peek() != '\r' && text.peek() != -1)
                text.take(1);
    if (!isPxMDigit(text.peek()))
        VELMO_THROW("Number expected in the image's raster!");
    std::uint32_t sample = 0;
    while (isPxMDigit(text.peek()))
        sample = appendPxMDigit(sample, *text.take(1), std::numeric_limits<unsigned short>::max());
    if (!isPxMSpace(text.peek()) && text.peek() != '#' && text.peek() != -1)
        VELMO_THROW("White space expected between the numbers of the image's raster!");
    return sample;
}

void grabText(const PxMFile& file, cv::Rect region, cv::Mat& image)
{
    const std::uint64_t begin = static_cast<std::uint64_t>(region.x) * file.header.u32Channels;
    const std::uint64_t end = begin + static_cast<std::uint64_t>(region.width) * file.header.u32Channels;
    ByteCursor text = file.raster();
    for (int row = 0; row < region.y + region.height; ++row) {
        unsigned short* out = row < region.y ? nullptr : image.ptr<unsigned short>(row - region.y);
        for (std::uint64_t n = 0; n < file.header.rowSamples(); ++n) {
            const std::uint32_t sample = takeSample(text);
            checkSamples(sample, file.header);
            if (out && n >= begin && n < end)
                out[n - begin] = static_cast<unsigned short>(sample);
        }
    }
}

} // namespace

ImageDecoderPxM::ImageDecoderPxM() = default;
ImageDecoderPxM::~ImageDecoderPxM() = default;

bool ImageDecoderPxM::open(const std::string& path)
{
    m_pFile.reset();
    try {
        m_pFile = load(path);
    } catch (const std::exception&) { // bad_alloc, or length_error of a size beyond every vector
        VELMO_THROW("No memory for the image file " + path + "!");
    }
    return m_pFile != nullptr;
}

void ImageDecoderPxM::grab(cv::Mat& image, const cv::Rect_<int>* region) const
{
    if (!m_pFile)
        VELMO_THROW("No image is open!");
    const cv::Rect part = checkedRegion(m_pFile->header, region);
    checkRasterFits(m_pFile->header, m_pFile->raster().left());
    cv::Mat decoded = allocate(part.size(), m_pFile->header.u32Channels);
    if (!decoded.empty())
        (m_pFile->header.bText ? grabText : grabBytes)(*m_pFile, part, decoded);
    image = decoded;
}

} // namespace velmo::exp

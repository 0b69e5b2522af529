#include "recordings/TiffFile.h"

#include "recordings/ImageSize.h"
#include "recordings/TiffHandle.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"

#include <algorithm>
#include <limits>

namespace velmo::recordings {
namespace {

constexpr std::uint64_t tileBytes = 16 << 20; ///< what a tile may have that is larger than its page
constexpr int mostTags = 256; ///< of a page: the time that libtiff needs for them grows with their square

/// What a page says of its pixels.
struct Page
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t samples = 1;
    std::uint16_t bits = 1;
    std::uint16_t format = SAMPLEFORMAT_UINT;

    explicit Page(TIFF* tiff)
    {
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
    }

    /// The type of its pixels, or -1 for one that is no frame.
    int type() const
    {
        if (samples != 1)
            return -1;
        if (format == SAMPLEFORMAT_IEEEFP)
            return bits == 32 ? CV_32F : bits == 64 ? CV_64F : -1;
        return bits == 8 ? CV_8U : bits == 16 ? CV_16U : -1;
    }
};

class TiffFile : public ImageFile
{
public:
    TiffFile(ByteFile file, const std::string& name)
        // O: tables of strips and tiles are read when they are needed.
        : m_pFile(std::move(file)), m_oTiff(m_pFile.get(), name, "rmO"), m_strUnit(unitOfPage())
    {
        requireShortDescription();
        // Walked once, so that a broken chain of pages is found before the first of them is used.
        m_nPages = isPage() ? 1 : 0;
        while (TIFFLastDirectory(m_oTiff) == 0) {
            readDirectory();
            m_nPages += isPage() ? 1 : 0;
        }
        m_oTiff.allow(TiffHandle::descriptionBytes);
        if (TIFFSetDirectory(m_oTiff, 0) == 0)
            refuse();
        if (m_nPages > 0 && !isPage())
            advance();
        m_bDegrees = Page(m_oTiff).type() >= CV_32F;
    }

    bool next(cv::Mat& image) override
    {
        if (m_nNext == m_nPages)
            return false;
        if (m_nNext > 0)
            advance();
        ++m_nNext;
        const Page page(m_oTiff);
        requireGrey(page);
        if ((page.type() >= CV_32F) != m_bDegrees)
            VELMO_THROW(m_oTiff.name() + ": has pages of counts and pages of degrees");
        image = cv::Mat(static_cast<int>(page.height), static_cast<int>(page.width),
                        page.type() < CV_32F ? CV_16U : CV_32F);
        m_oTiff.allow(std::numeric_limits<std::uint64_t>::max());
        if (TIFFIsTiled(m_oTiff) != 0)
            readTiles(image, page.type());
        else
            readRows(image, page.type());
        return true;
    }

    std::optional<std::size_t> count() const override { return m_nPages; }
    bool holdsDegrees() const override { return m_bDegrees; }
    std::string unit() const override { return m_strUnit; }

private:
    [[noreturn]] void refuse() const
    {
        const std::string& error = m_oTiff.error();
        VELMO_THROW(m_oTiff.name() + ": not a whole TIFF: " + (error.empty() ? "a page comes twice" : error));
    }

    std::string unitOfPage() const
    {
        const char* description = nullptr;
        TIFFGetField(m_oTiff, TIFFTAG_IMAGEDESCRIPTION, &description);
        return description == nullptr ? "" : unitInLines(description);
    }

    bool isPage() const
    {
        std::uint32_t kind = 0;
        return TIFFGetField(m_oTiff, TIFFTAG_SUBFILETYPE, &kind) == 0 || (kind & FILETYPE_REDUCEDIMAGE) == 0;
    }

    void readDirectory()
    {
        m_oTiff.allow(TiffHandle::descriptionBytes);
        if (TIFFReadDirectory(m_oTiff) == 0)
            refuse();
        requireShortDescription();
    }

    void requireShortDescription() const
    {
        if (m_oTiff.wantedMore())
            VELMO_THROW(m_oTiff.name() + ": what describes a page has more than " +
                        std::to_string(TiffHandle::descriptionBytes) + " bytes");
        if (TIFFGetTagListCount(m_oTiff) > mostTags)
            VELMO_THROW(m_oTiff.name() + ": a page has " + std::to_string(TIFFGetTagListCount(m_oTiff)) +
                        " tags, at most " + std::to_string(mostTags) + " are read");
    }

    void advance()
    {
        do
            readDirectory();
        while (!isPage());
    }

    void requireGrey(const Page& page) const
    {
        requireImageSize(m_oTiff.name(), page.width, page.height);
        if (page.type() < 0)
            VELMO_THROW(m_oTiff.name() + ": not a frame of 16-bit grey values (it has " +
                        std::to_string(page.samples) + " channels of " + std::to_string(page.bits) +
                        " bits)");
    }

    void readRows(cv::Mat& image, int type)
    {
        cv::Mat row(1, image.cols, type);
        if (TIFFScanlineSize64(m_oTiff) != row.total() * row.elemSize())
            refuse();
        requirePackedSize(TIFFNumberOfStrips(m_oTiff), TIFFStripSize64(m_oTiff));
        for (int r = 0; r < image.rows; ++r) {
            if (TIFFReadScanline(m_oTiff, row.data, static_cast<std::uint32_t>(r), 0) != 1)
                refuse();
            row.convertTo(image.row(r), image.type());
        }
    }

    void readTiles(cv::Mat& image, int type)
    {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        TIFFGetField(m_oTiff, TIFFTAG_TILEWIDTH, &width);
        TIFFGetField(m_oTiff, TIFFTAG_TILELENGTH, &height);
        requireImageSize(m_oTiff.name() + ": its tiles", width, height);
        const auto pixelBytes = static_cast<std::uint64_t>(CV_ELEM_SIZE(type));
        const std::uint64_t bytes = width * height * pixelBytes;
        if (bytes > std::max(image.total() * pixelBytes, tileBytes) || TIFFTileSize64(m_oTiff) != bytes)
            VELMO_THROW(m_oTiff.name() + ": its tiles of " + std::to_string(width) + "x" +
                        std::to_string(height) + " do not fit its pages");
        requirePackedSize(TIFFNumberOfTiles(m_oTiff), bytes);
        cv::Mat tile(static_cast<int>(height), static_cast<int>(width), type);
        for (int y = 0; y < image.rows; y += tile.rows)
            for (int x = 0; x < image.cols; x += tile.cols) {
                if (TIFFReadTile(m_oTiff, tile.data, static_cast<std::uint32_t>(x),
                                 static_cast<std::uint32_t>(y), 0, 0) < 0)
                    refuse();
                const cv::Rect inside = cv::Rect({x, y}, tile.size()) & cv::Rect({}, image.size());
                tile(cv::Rect({}, inside.size())).convertTo(image(inside), image.type());
            }
    }

    /// libtiff reads a packed part as a whole: it has to have a size that packing explains.
    void requirePackedSize(std::uint32_t parts, std::uint64_t unpackedBytes) const
    {
        for (std::uint32_t part = 0; part < parts; ++part)
            if (TIFFGetStrileByteCount(m_oTiff, part) > 2 * unpackedBytes + 65536)
                VELMO_THROW(m_oTiff.name() + ": its parts have more bytes than their pixels need");
    }

    ByteFile m_pFile;
    TiffHandle m_oTiff;
    std::string m_strUnit;
    std::size_t m_nPages = 0;
    std::size_t m_nNext = 0;
    bool m_bDegrees = false;
};

} // namespace

std::unique_ptr<ImageFile> openTiff(ByteFile file, const std::string& name)
{
    return std::make_unique<TiffFile>(std::move(file), name);
}

} // namespace velmo::recordings

#include "recordings/TiffFile.h"

#include "recordings/ImageSize.h"
#include "recordings/TiffHandle.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"

#include <algorithm>
#include <vector>

namespace velmo::recordings {
namespace {

constexpr std::uint64_t tileBytes = 16 << 20; ///< what a tile may have that is larger than its page

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
        : m_pFile(std::move(file)), m_oTiff(m_pFile.get(), name, "rm"), m_strUnit(unitOfPage())
    {
        // Walked once, so that a broken chain of pages is found before the first of them is used.
        m_nPages = isPage() ? 1 : 0;
        while (TIFFLastDirectory(m_oTiff) == 0) {
            readDirectory();
            m_nPages += isPage() ? 1 : 0;
        }
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
        image = cv::Mat(static_cast<int>(page.height), static_cast<int>(page.width), page.type());
        if (TIFFIsTiled(m_oTiff) != 0)
            readTiles(image);
        else
            readRows(image);
        image.convertTo(image, image.depth() < CV_32F ? CV_16U : CV_32F);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_nPages; }
    bool holdsDegrees() const override { return m_bDegrees; }
    std::string unit() const override { return m_strUnit; }

private:
    [[noreturn]] void refuse() const
    {
        VELMO_THROW(m_oTiff.name() + ": not a whole TIFF: " + m_oTiff.error());
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
        if (TIFFReadDirectory(m_oTiff) == 0)
            refuse();
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

    void readRows(cv::Mat& image)
    {
        if (TIFFScanlineSize64(m_oTiff) != static_cast<std::uint64_t>(image.cols) * image.elemSize())
            refuse();
        requirePackedSize(TIFFNumberOfStrips(m_oTiff), TIFFStripSize64(m_oTiff));
        for (int r = 0; r < image.rows; ++r)
            if (TIFFReadScanline(m_oTiff, image.ptr(r), static_cast<std::uint32_t>(r), 0) != 1)
                refuse();
    }

    void readTiles(cv::Mat& image)
    {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        TIFFGetField(m_oTiff, TIFFTAG_TILEWIDTH, &width);
        TIFFGetField(m_oTiff, TIFFTAG_TILELENGTH, &height);
        requireImageSize(m_oTiff.name() + ": its tiles", width, height);
        const std::uint64_t bytes = std::uint64_t{width} * height * image.elemSize();
        if (bytes > std::max<std::uint64_t>(image.total() * image.elemSize(), tileBytes) ||
            TIFFTileSize64(m_oTiff) != bytes)
            VELMO_THROW(m_oTiff.name() + ": its tiles of " + std::to_string(width) + "x" +
                        std::to_string(height) + " do not fit its pages");
        requirePackedSize(TIFFNumberOfTiles(m_oTiff), bytes);
        cv::Mat tile(static_cast<int>(height), static_cast<int>(width), image.type());
        for (int y = 0; y < image.rows; y += tile.rows)
            for (int x = 0; x < image.cols; x += tile.cols) {
                if (TIFFReadTile(m_oTiff, tile.data, static_cast<std::uint32_t>(x),
                                 static_cast<std::uint32_t>(y), 0, 0) < 0)
                    refuse();
                const cv::Rect inside = cv::Rect({x, y}, tile.size()) & cv::Rect({}, image.size());
                tile(cv::Rect({}, inside.size())).copyTo(image(inside));
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

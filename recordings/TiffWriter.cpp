#include "recordings/GreyWriters.h"
#include "recordings/TiffHandle.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"

#include <algorithm>
#include <cerrno>

namespace velmo::recordings {
namespace {

constexpr std::uint64_t classicBytes = std::uint64_t{4} << 30;
constexpr std::uint64_t directoryBytes = 1024; ///< more than what describes a page takes
constexpr std::uint64_t stripBytes = 1 << 20;  ///< readers take a strip into memory as a whole

class TiffWriter : public ImageWriter
{
public:
    TiffWriter(OutputFile file, std::optional<std::size_t> expected, std::string unit)
        : m_oFile(std::move(file)), m_nExpected(expected), m_strUnit(std::move(unit))
    {}

    void write(const cv::Mat& image) override
    {
        if (!m_oTiff)
            m_oTiff.emplace(m_oFile.get(), m_oFile.name(), fitsClassic(image) ? "w" : "w8");
        describe(image);
        for (int r = 0; r < image.rows; ++r)
            // libtiff takes bytes that it may change, but changes none that are not packed
            require(TIFFWriteScanline(*m_oTiff, const_cast<unsigned char*>(image.ptr(r)),
                                      static_cast<std::uint32_t>(r), 0) == 1);
        require(TIFFWriteDirectory(*m_oTiff) == 1);
    }

    void finish() override
    {
        m_oTiff.reset();
        m_oFile.finish();
    }

private:
    bool fitsClassic(const cv::Mat& image) const
    {
        const std::uint64_t page = image.total() * image.elemSize() + directoryBytes;
        return m_nExpected && *m_nExpected < classicBytes / page;
    }

    void describe(const cv::Mat& image)
    {
        const auto rowBytes = static_cast<std::uint64_t>(image.cols) * image.elemSize();
        const bool degrees = image.depth() == CV_32F;
        TIFF* const tiff = *m_oTiff;
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.cols);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.rows);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, degrees ? 32 : 16);
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, degrees ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                     static_cast<std::uint32_t>(std::max<std::uint64_t>(1, stripBytes / rowBytes)));
        if (!m_strUnit.empty())
            TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, unitLine(m_strUnit).c_str());
    }

    void require(bool done) const
    {
        if (!done && std::ferror(m_oFile.get()) != 0)
            m_oFile.refuse();
        if (!done)
            VELMO_THROW(m_oFile.name() + ": cannot be written: " + m_oTiff->error());
    }

    OutputFile m_oFile;
    std::optional<std::size_t> m_nExpected;
    std::string m_strUnit;
    std::optional<TiffHandle> m_oTiff;
};

} // namespace

std::unique_ptr<ImageWriter> createTiff(OutputFile file, std::optional<std::size_t> expected,
                                        const std::string& unit)
{
    return std::make_unique<TiffWriter>(std::move(file), expected, unit);
}

} // namespace velmo::recordings

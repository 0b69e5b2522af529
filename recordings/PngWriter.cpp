#include "recordings/PngFile.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"
#include "core/datatypes/Endian.h"

#include <png.h>
#include <zlib.h>

#include <vector>

namespace velmo::recordings {
namespace {

/// libpng's writer. It leaves a failed call by longjmp: what `run` is given must have nothing to destroy.
class PngWriter
{
public:
    explicit PngWriter(OutputFile file) : m_oFile(std::move(file))
    {
        m_pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore);
        m_pInfo = m_pPng == nullptr ? nullptr : png_create_info_struct(m_pPng);
        if (m_pInfo == nullptr) {
            png_destroy_write_struct(&m_pPng, nullptr);
            VELMO_THROW(m_oFile.name() + ": not enough memory");
        }
    }
    ~PngWriter() { png_destroy_write_struct(&m_pPng, &m_pInfo); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    void write(const cv::Mat& image, const std::string& unit)
    {
        std::vector<png_const_bytep> rows(static_cast<std::size_t>(image.rows));
        for (int r = 0; r < image.rows; ++r)
            rows[static_cast<std::size_t>(r)] = image.ptr(r);
        std::string keyword = unitKeyword;
        std::string value = unit;
        png_text text = {};
        text.compression = PNG_TEXT_COMPRESSION_NONE;
        text.key = keyword.data();
        text.text = value.data();
        run([&] {
            png_init_io(m_pPng, m_oFile.get());
            describe(image);
            if (!unit.empty())
                png_set_text(m_pPng, m_pInfo, &text, 1);
            png_write_info(m_pPng, m_pInfo);
            if (image.depth() == CV_16U && !exp::Endianness::isBigEndianSystem())
                png_set_swap(m_pPng);
            if (image.channels() == 3)
                png_set_bgr(m_pPng);
            for (const png_const_bytep row : rows)
                png_write_row(m_pPng, row);
            png_write_end(m_pPng, m_pInfo);
        });
        m_oFile.finish();
    }

private:
    void describe(const cv::Mat& image)
    {
        png_set_user_limits(m_pPng, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(m_pPng, m_pInfo, static_cast<png_uint_32>(image.cols),
                     static_cast<png_uint_32>(image.rows), image.depth() == CV_16U ? 16 : 8,
                     image.channels() == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // All five filters would make noisy colours 2 % smaller and take half as long again.
        png_set_filter(m_pPng, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB | PNG_FILTER_UP);
        png_set_compression_level(m_pPng, 1);
        png_set_compression_strategy(m_pPng, Z_RLE);
    }

    template <class Calls>
    void run(Calls calls)
    {
        if (setjmp(png_jmpbuf(m_pPng)) == 0) // NOLINT(cert-err52-cpp): the only way out that libpng offers
            calls();
        else
            m_oFile.refuse();
    }

    [[noreturn]] static void fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void ignore(png_structp, png_const_charp) {}

    OutputFile m_oFile;
    png_structp m_pPng;
    png_infop m_pInfo;
};

} // namespace

void writePng(OutputFile file, const cv::Mat& image, const std::string& unit)
{
    PngWriter(std::move(file)).write(image, unit);
}

} // namespace velmo::recordings

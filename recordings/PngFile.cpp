#include "recordings/PngFile.h"

#include "recordings/ImageSize.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"
#include "core/datatypes/Endian.h"

#include <png.h>

#include <cstdlib>
#include <vector>

namespace velmo::recordings {
namespace {

constexpr png_alloc_size_t maxTextBytes = 1 << 20; ///< a packed text or profile may unpack to so much
/// What libpng may ask for in all while it reads one picture: far more than its rows take, and all that
/// bounds how many texts a file may have and how long it says they are.
constexpr png_alloc_size_t maxBytes = 16 << 20;

/// libpng's reader. It leaves a failed call by longjmp: what `run` is given must have nothing to destroy.
class PngReader
{
public:
    PngReader(ByteFile file, std::string name) : m_pFile(std::move(file)), m_strName(std::move(name))
    {
        m_pPng = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, fail, ignore, this, allocate, release);
        m_pInfo = m_pPng == nullptr ? nullptr : png_create_info_struct(m_pPng);
        if (m_pInfo == nullptr) {
            png_destroy_read_struct(&m_pPng, nullptr, nullptr);
            VELMO_THROW(m_strName + ": not enough memory");
        }
    }
    ~PngReader() { png_destroy_read_struct(&m_pPng, &m_pInfo, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    void readHeader()
    {
        run([this] {
            png_set_user_limits(m_pPng, s32MaxImageSide, s32MaxImageSide);
            png_set_chunk_malloc_max(m_pPng, maxTextBytes);
            png_init_io(m_pPng, m_pFile.get());
            png_read_info(m_pPng, m_pInfo);
        });
    }

    int colourType() const { return png_get_color_type(m_pPng, m_pInfo); }
    int depth() const { return png_get_bit_depth(m_pPng, m_pInfo); }

    cv::Size size() const
    {
        return {static_cast<int>(png_get_image_width(m_pPng, m_pInfo)),
                static_cast<int>(png_get_image_height(m_pPng, m_pInfo))};
    }

    std::string text(const std::string& keyword) const
    {
        png_textp texts = nullptr;
        const int count = png_get_text(m_pPng, m_pInfo, &texts, nullptr);
        for (int i = 0; i < count; ++i)
            if (texts[i].key == keyword)
                return texts[i].text;
        return {};
    }

    void setValuesAsTheyAre()
    {
        run([this] {
            png_set_packing(m_pPng); // of less than 8 bits: one byte each, not scaled
            if (!exp::Endianness::isBigEndianSystem())
                png_set_swap(m_pPng);
        });
    }

    void setBlueGreenRed()
    {
        run([this] {
            png_set_expand(m_pPng);
            png_set_strip_16(m_pPng);
            png_set_strip_alpha(m_pPng);
            png_set_gray_to_rgb(m_pPng);
            png_set_bgr(m_pPng);
        });
    }

    /// @param image  as large as the file says, of the depth that was set
    void readRows(cv::Mat& image)
    {
        std::vector<png_bytep> rows(static_cast<std::size_t>(image.rows));
        for (int r = 0; r < image.rows; ++r)
            rows[static_cast<std::size_t>(r)] = image.ptr(r);
        run([&] {
            png_set_interlace_handling(m_pPng);
            png_read_update_info(m_pPng, m_pInfo);
        });
        if (png_get_rowbytes(m_pPng, m_pInfo) != static_cast<std::size_t>(image.cols) * image.elemSize())
            VELMO_THROW(m_strName + ": rows of another length than its header says");
        run([&] {
            png_read_image(m_pPng, rows.data());
            png_read_end(m_pPng, nullptr);
        });
    }

private:
    template <class Calls>
    void run(Calls calls)
    {
        if (setjmp(png_jmpbuf(m_pPng)) == 0) // NOLINT(cert-err52-cpp): the only way out that libpng offers
            calls();
        else
            VELMO_THROW(m_strName + ": not a whole PNG picture: " + m_strError);
    }

    [[noreturn]] static void fail(png_structp png, png_const_charp message)
    {
        static_cast<PngReader*>(png_get_error_ptr(png))->m_strError = message;
        png_longjmp(png, 1);
    }

    static void ignore(png_structp, png_const_charp) {}

    static png_voidp allocate(png_structp png, png_alloc_size_t size)
    {
        auto& left = static_cast<PngReader*>(png_get_mem_ptr(png))->m_uLeft;
        if (size > left)
            png_error(png, "its texts take more than 16 MiB");
        left -= size;
        return std::malloc(size);
    }

    static void release(png_structp, png_voidp memory) { std::free(memory); }

    ByteFile m_pFile;
    std::string m_strName;
    std::string m_strError;
    png_alloc_size_t m_uLeft = maxBytes;
    png_structp m_pPng;
    png_infop m_pInfo;
};

class PngFile : public ImageFile
{
public:
    PngFile(ByteFile file, const std::string& name) : m_oReader(std::move(file), name)
    {
        m_oReader.readHeader();
        if (m_oReader.colourType() != PNG_COLOR_TYPE_GRAY)
            VELMO_THROW(name +
                        ": not a frame of 16-bit grey values: its pixels have colours or transparency");
        m_oReader.setValuesAsTheyAre();
    }

    bool next(cv::Mat& image) override
    {
        if (m_bRead)
            return false;
        m_bRead = true;
        image = cv::Mat(m_oReader.size(), m_oReader.depth() == 16 ? CV_16U : CV_8U);
        m_oReader.readRows(image);
        image.convertTo(image, CV_16U);
        return true;
    }

    std::optional<std::size_t> count() const override { return 1; }
    std::string unit() const override { return m_oReader.text(unitKeyword); }

private:
    PngReader m_oReader;
    bool m_bRead = false;
};

} // namespace

std::unique_ptr<ImageFile> openPng(ByteFile file, const std::string& name)
{
    return std::make_unique<PngFile>(std::move(file), name);
}

cv::Mat_<cv::Vec3b> readPngColours(ByteFile file, const std::string& name)
{
    PngReader reader(std::move(file), name);
    reader.readHeader();
    reader.setBlueGreenRed();
    cv::Mat colours(reader.size(), CV_8UC3);
    reader.readRows(colours);
    return colours;
}

} // namespace velmo::recordings

#include "recordings/NpyFile.h"

#include "recordings/ByteOrder.h"
#include "recordings/ImageSize.h"

#include "core/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace velmo::recordings {
namespace {

constexpr std::size_t maxHeaderBytes = 1024; ///< NumPy needs 128

struct NpyHeader
{
    char order = '<'; ///< '>': high byte first
    std::string type; ///< "u2"
    bool bColumnsFirst = false;
    std::vector<std::uint64_t> shape;
};

/// What stands behind a key of the dictionary that the header is.
std::string_view valueOf(std::string_view dictionary, const std::string& key)
{
    for (const char quote : {'\'', '"'}) {
        const std::size_t place = dictionary.find(quote + key + quote);
        const std::size_t begin = dictionary.find_first_not_of(": ", place + key.size() + 2);
        if (place != std::string_view::npos && begin != std::string_view::npos)
            return dictionary.substr(begin);
    }
    VELMO_THROW("there is no " + key + " in its header");
}

/// The value up to its end, without what encloses it.
std::string_view enclosed(std::string_view value, std::string_view opening, char end)
{
    const std::size_t length = value.find(end, 1);
    if (opening.find(value[0]) == std::string_view::npos || length == std::string_view::npos)
        VELMO_THROW("its header is no dictionary of an array");
    return value.substr(1, length - 1);
}

std::vector<std::uint64_t> numbersIn(std::string_view text)
{
    std::vector<std::uint64_t> numbers;
    while (!text.empty()) {
        std::uint32_t number = 0;
        const char* const end = text.data() + text.size();
        const auto read = std::from_chars(text.data(), end, number);
        if (read.ec != std::errc())
            VELMO_THROW("its shape is not of numbers up to 4294967295");
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
        text.remove_prefix(std::min(text.find_first_not_of(", "), text.size()));
    }
    return numbers;
}

NpyHeader parse(std::string_view dictionary)
{
    NpyHeader header;
    const std::string_view type = valueOf(dictionary, "descr");
    header.type = enclosed(type, "'\"", type[0]);
    if (!header.type.empty() && std::string_view("<>|").find(header.type[0]) != std::string_view::npos) {
        header.order = header.type[0];
        header.type.erase(0, 1);
    }
    header.bColumnsFirst = valueOf(dictionary, "fortran_order").rfind("False", 0) != 0;
    header.shape = numbersIn(enclosed(valueOf(dictionary, "shape"), "(", ')'));
    return header;
}

NpyHeader readHeader(std::FILE* file, const std::string& name)
{
    // "\x93NUMPY", version, and the length of the text, low byte first.
    std::array<unsigned char, 12> begin = {};
    readBytes(file, name, begin.data(), 10);
    std::size_t length = begin[8] | std::size_t{begin[9]} << 8;
    if (begin[6] > 1) {
        readBytes(file, name, begin.data() + 10, 2);
        length |= std::size_t{begin[10]} << 16 | std::size_t{begin[11]} << 24;
    }
    if (length > maxHeaderBytes)
        VELMO_THROW(name + ": its header has " + std::to_string(length) + " bytes, the limit is " +
                    std::to_string(maxHeaderBytes));
    std::string text(length, ' ');
    readBytes(file, name, text.data(), text.size());
    try {
        return parse(text);
    } catch (const exp::Exception& error) {
        VELMO_THROW(name + ": not a NumPy array: " + error.what());
    }
}

/// The type of pixels that the header means, or -1.
int pixelType(const std::string& type)
{
    if (type == "u1")
        return CV_8U;
    if (type == "u2" || type == "i2")
        return CV_16U;
    return type == "f4" ? CV_32F : type == "f8" ? CV_64F : -1;
}

class NpyFile : public ImageFile
{
public:
    NpyFile(ByteFile file, const std::string& name) : m_pFile(std::move(file)), m_strName(name)
    {
        const std::uint64_t bytes = sizeOf(m_pFile.get());
        NpyHeader header = readHeader(m_pFile.get(), name);
        m_s32Type = pixelType(header.type);
        if (m_s32Type < 0 || header.bColumnsFirst)
            VELMO_THROW(name + ": not an array of u1, u2, i2, f4 or f8 in C order (its type is " +
                        header.type.substr(0, 8) + (header.bColumnsFirst ? " in Fortran order)" : ")"));
        m_bBigEndian = header.order == '>';
        if (header.shape.size() == 2)
            header.shape.insert(header.shape.begin(), 1);
        if (header.shape.size() != 3)
            VELMO_THROW(name + ": not an array of rows x columns or frames x rows x columns");
        requireImageSize(name, header.shape[2], header.shape[1]);
        m_nFrames = header.shape[0];
        m_oSize = {static_cast<int>(header.shape[2]), static_cast<int>(header.shape[1])};
        requireLength(bytes - static_cast<std::uint64_t>(ftello(m_pFile.get())));
    }

    bool next(cv::Mat& image) override
    {
        if (m_nNext == m_nFrames)
            return false;
        ++m_nNext;
        image = cv::Mat(m_oSize, m_s32Type);
        readBytes(m_pFile.get(), m_strName, image.data, image.total() * image.elemSize());
        inOrder(image, m_bBigEndian).convertTo(image, image.depth() < CV_32F ? CV_16U : CV_32F);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_nFrames; }
    bool holdsDegrees() const override { return m_s32Type >= CV_32F; }

private:
    void requireLength(std::uint64_t bytes) const
    {
        const std::uint64_t frame =
            static_cast<std::uint64_t>(CV_ELEM_SIZE(m_s32Type)) * static_cast<std::uint64_t>(m_oSize.area());
        // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): a size has passed requireImageSize
        if (bytes % frame != 0 || bytes / frame != m_nFrames)
            VELMO_THROW(m_strName + ": its header says " + std::to_string(m_nFrames) + " frames of " +
                        std::to_string(frame) + " bytes, behind it are " + std::to_string(bytes) + " bytes");
    }

    ByteFile m_pFile;
    std::string m_strName;
    cv::Size m_oSize;
    int m_s32Type = -1;
    bool m_bBigEndian = false;
    std::size_t m_nFrames = 0;
    std::size_t m_nNext = 0;
};

} // namespace

std::unique_ptr<ImageFile> openNpy(ByteFile file, const std::string& name)
{
    return std::make_unique<NpyFile>(std::move(file), name);
}

} // namespace velmo::recordings

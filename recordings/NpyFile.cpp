#include "recordings/NpyFile.h"

#include "recordings/ByteOrder.h"
#include "recordings/ImageSize.h"

#include "core/Exception.h"

#include <array>
#include <regex>
#include <vector>

namespace velmo::recordings {
namespace {

constexpr std::size_t maxHeaderBytes = 1024; ///< NumPy needs 128

struct NpyHeader
{
    std::string order; ///< "<" low byte first, ">" high byte first, "|" single bytes
    std::string type;  ///< "u2"
    bool bColumnsFirst = false;
    std::vector<std::uint64_t> shape;
};

/// The value of a key in the dictionary that the header is, in the parts that `form` encloses.
std::smatch valueOf(const std::string& dictionary, const std::string& key, const std::string& form)
{
    std::smatch parts;
    if (!std::regex_search(dictionary, parts, std::regex("['\"]" + key + "['\"] *: *" + form)))
        VELMO_THROW("there is no usable " + key + " in its header");
    return parts;
}

NpyHeader parse(const std::string& dictionary)
{
    NpyHeader header;
    const std::smatch type = valueOf(dictionary, "descr", "['\"]([<>|]?)([a-zA-Z][0-9]{0,3})['\"]");
    header.order = type[1];
    header.type = type[2];
    header.bColumnsFirst = valueOf(dictionary, "fortran_order", "(True|False)")[1] == "True";
    const std::string shape = valueOf(dictionary, "shape", "\\(([0-9, ]*)\\)")[1];
    const std::regex number("[0-9]+");
    for (std::sregex_iterator next(shape.begin(), shape.end(), number), end; next != end; ++next) {
        if (next->length() > 10)
            VELMO_THROW("its shape (" + shape + ") is larger than any recording");
        header.shape.push_back(std::stoull(next->str()));
    }
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
                        header.type + (header.bColumnsFirst ? " in Fortran order)" : ")"));
        m_bBigEndian = header.order == ">";
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
            std::uint64_t{CV_ELEM_SIZE(m_s32Type)} * static_cast<std::uint64_t>(m_oSize.area());
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

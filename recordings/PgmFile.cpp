#include "recordings/PgmFile.h"

#include "recordings/ByteFile.h"
#include "recordings/UnitText.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <array>

namespace velmo::recordings {
namespace {

/// The comment behind the magic number: it is where the unit is written.
std::string unitOf(const std::string& path)
{
    const ByteFile file = openBytes(path);
    std::array<char, 256> begin = {};
    const std::size_t count = std::fread(begin.data(), 1, begin.size(), file.get());
    const std::string lines(begin.data(), count); // "P5\n# thermal unit: centikelvin\n"
    const std::size_t end = lines.find('\n', 3);
    const bool comment = count > 5 && lines.compare(2, 3, "\n# ") == 0 && end != std::string::npos;
    return comment ? unitInLines(lines.substr(5, end - 5)) : "";
}

class PgmFile : public ImageFile
{
public:
    explicit PgmFile(const std::string& path) : m_strPath(path), m_strUnit(unitOf(path)) {}

    bool next(cv::Mat& image) override
    {
        if (m_bRead)
            return false;
        m_bRead = true;
        try {
            exp::ImageDecoderPxM decoder;
            if (!decoder.open(m_strPath))
                VELMO_THROW("not a whole PGM picture");
            decoder.grab(image);
        } catch (const exp::Exception& error) {
            VELMO_THROW(m_strPath + ": " + error.what());
        }
        if (image.channels() != 1)
            VELMO_THROW(m_strPath + ": not a frame of 16-bit grey values (it has " +
                        std::to_string(image.channels()) + " channels)");
        return true;
    }

    std::optional<std::size_t> count() const override { return 1; }
    std::string unit() const override { return m_strUnit; }

private:
    std::string m_strPath;
    std::string m_strUnit;
    bool m_bRead = false;
};

} // namespace

std::unique_ptr<ImageFile> openPgm(const std::string& path)
{
    return std::make_unique<PgmFile>(path);
}

} // namespace velmo::recordings

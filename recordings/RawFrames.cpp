#include "recordings/RawFrames.h"

#include "recordings/ByteOrder.h"
#include "recordings/RawStream.h"

namespace velmo::recordings {
namespace {

class RawFrames : public FrameSource
{
public:
    RawFrames(std::string name, std::vector<std::string> files, RawFormat format)
        : m_strName(std::move(name)), m_oFormat(format),
          m_oStream(std::move(files), 2 * static_cast<std::size_t>(format.size.area()),
                    std::to_string(format.size.width) + "x" + std::to_string(format.size.height) + " frames")
    {}

    bool next(Frame& frame) override
    {
        Frame read(m_oFormat.size); // of its own: the last frame's user may hold that one
        if (!m_oStream.next(read.data))
            return false;
        frame = inOrder(read, m_oFormat.bigEndian);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_oStream.count(); }
    std::string name() const override { return m_strName; }
    std::vector<std::string> files() const override { return m_oStream.files(); }
    std::string remark() const override { return m_oStream.remark(); }

private:
    std::string m_strName;
    RawFormat m_oFormat;
    RawStream m_oStream;
};

} // namespace

std::unique_ptr<FrameSource> openRawFrames(std::string name, std::vector<std::string> files, RawFormat format)
{
    return std::make_unique<RawFrames>(std::move(name), std::move(files), format);
}

} // namespace velmo::recordings

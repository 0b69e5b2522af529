#include "recordings/films/Libav.h"

#include "recordings/ByteFile.h"

#include "core/Exception.h"

#include <array>
#include <cerrno>

namespace velmo::recordings {
namespace {

constexpr int bufferBytes = 1 << 16;

std::FILE* fileOf(void* handle)
{
    return static_cast<std::FILE*>(handle);
}

int read(void* handle, std::uint8_t* bytes, int count)
{
    const std::size_t got = std::fread(bytes, 1, static_cast<std::size_t>(count), fileOf(handle));
    if (got == 0)
        return std::ferror(fileOf(handle)) != 0 ? AVERROR(EIO) : AVERROR_EOF;
    return static_cast<int>(got);
}

int write(void* handle, std::uint8_t* bytes, int count)
{
    const auto all = static_cast<std::size_t>(count);
    return std::fwrite(bytes, 1, all, fileOf(handle)) == all ? count : AVERROR(errno);
}

std::int64_t seek(void* handle, std::int64_t offset, int whence)
{
    std::FILE* const file = fileOf(handle);
    if (whence == AVSEEK_SIZE) {
        const off_t here = ftello(file);
        const auto size = static_cast<std::int64_t>(sizeOf(file));
        return fseeko(file, here, SEEK_SET) == 0 ? size : AVERROR(errno);
    }
    return fseeko(file, offset, whence & ~AVSEEK_FORCE) == 0 ? ftello(file) : AVERROR(errno);
}

} // namespace

int require(int code, const std::string& name)
{
    if (code >= 0)
        return code;
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text = {};
    av_strerror(code, text.data(), text.size());
    VELMO_THROW(name + ": " + text.data());
}

LibavFile::LibavFile(std::FILE* file, bool writing)
    : m_pContext(avio_alloc_context(static_cast<unsigned char*>(av_malloc(bufferBytes)), bufferBytes,
                                    writing ? 1 : 0, file, read, write, seek))
{}

LibavFile::~LibavFile()
{
    av_freep(&m_pContext->buffer);
    avio_context_free(&m_pContext);
}

LibavInput::LibavInput(std::FILE* file, std::string name)
    : m_oFile(file, false), m_strName(std::move(name)), m_pContext(avformat_alloc_context())
{
    m_pContext->pb = m_oFile.get();
    // Nothing but what films of frames come in: other formats name further files and addresses.
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", "matroska,webm,avi,nut,mov,mp4,m4a,3gp,3g2,mj2", 0);
    const int opened = avformat_open_input(&m_pContext, "", nullptr, &options);
    av_dict_free(&options);
    require(opened, m_strName);
    m_s32Film = av_find_best_stream(m_pContext, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (m_s32Film < 0) {
        avformat_close_input(&m_pContext);
        VELMO_THROW(m_strName + ": there are no pictures in it");
    }
}

LibavInput::~LibavInput()
{
    avformat_close_input(&m_pContext);
}

bool LibavInput::next(AVPacket& packet)
{
    for (;;) {
        av_packet_unref(&packet);
        const int code = av_read_frame(m_pContext, &packet);
        if (code == AVERROR_EOF)
            return false;
        require(code, m_strName);
        if (packet.stream_index != m_s32Film)
            continue;
        if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0)
            VELMO_THROW(m_strName + ": cut off");
        return true;
    }
}

std::string LibavInput::text(const std::string& keyword) const
{
    const AVDictionaryEntry* const entry = av_dict_get(m_pContext->metadata, keyword.c_str(), nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

} // namespace velmo::recordings

#include "recordings/films/Libav.h"

#include "recordings/ByteFile.h"

#include "core/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

namespace velmo::recordings {
namespace {

constexpr int bufferBytes = 1 << 16;
constexpr int readBufferBytes = 1 << 14; ///< what is read for nothing at each place that is sought

/// What a film may have before its first packet, and between two beside the packet: lists of empty elements
/// take more than a hundred times their bytes in memory, and texts a time that grows with their square.
constexpr std::uint64_t headerBytes = 96 << 10;
constexpr std::uint64_t indexBytes = 64; ///< more than what an index has for a packet

/// Only Matroska has to be sought in before its first packet, for texts at its end. The others would read
/// their whole index.
bool isMatroska(std::FILE* file)
{
    std::array<unsigned char, 4> begin = {};
    const bool read = std::fread(begin.data(), 1, begin.size(), file) == begin.size();
    std::rewind(file);
    return read && begin == std::array<unsigned char, 4>{0x1a, 0x45, 0xdf, 0xa3};
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
    : m_oBytes{file, std::numeric_limits<std::uint64_t>::max(), false}
{
    const int buffer = writing ? bufferBytes : readBufferBytes;
    m_pContext = avio_alloc_context(static_cast<unsigned char*>(av_malloc(static_cast<std::size_t>(buffer))),
                                    buffer, writing ? 1 : 0, &m_oBytes, read, write, seek);
}

LibavFile::~LibavFile()
{
    av_freep(&m_pContext->buffer);
    avio_context_free(&m_pContext);
}

int LibavFile::read(void* handle, std::uint8_t* bytes, int count)
{
    auto& from = *static_cast<Bytes*>(handle);
    const std::size_t got = std::fread(bytes, 1, static_cast<std::size_t>(count), from.file);
    if (got == 0)
        return std::ferror(from.file) != 0 ? AVERROR(EIO) : AVERROR_EOF;
    if (got > from.allowed) {
        from.wantedMore = true;
        return AVERROR(EFBIG);
    }
    from.allowed -= got;
    return static_cast<int>(got);
}

int LibavFile::write(void* handle, std::uint8_t* bytes, int count)
{
    const auto all = static_cast<std::size_t>(count);
    return std::fwrite(bytes, 1, all, static_cast<Bytes*>(handle)->file) == all ? count : AVERROR(errno);
}

std::int64_t LibavFile::seek(void* handle, std::int64_t offset, int whence)
{
    std::FILE* const file = static_cast<Bytes*>(handle)->file;
    if (whence == AVSEEK_SIZE) {
        const off_t here = ftello(file);
        const auto size = static_cast<std::int64_t>(sizeOf(file));
        return fseeko(file, here, SEEK_SET) == 0 ? size : AVERROR(errno);
    }
    return fseeko(file, offset, whence & ~AVSEEK_FORCE) == 0 ? ftello(file) : AVERROR(errno);
}

LibavInput::LibavInput(std::FILE* file, std::string name, Origin origin)
    : m_oFile(file, false), m_strName(std::move(name)), m_eOrigin(origin),
      m_pContext(avformat_alloc_context())
{
    m_pContext->pb = m_oFile.get();
    if (m_eOrigin == Origin::Here) {
        open("matroska,webm,avi,mov,mp4,m4a,3gp,3g2,mj2");
    } else {
        m_oFile.allow(headerBytes);
        const int seekable = m_pContext->pb->seekable;
        m_pContext->pb->seekable = isMatroska(file) ? seekable : 0;
        open("matroska,webm,avi,nut");
        m_pContext->pb->seekable = seekable;
    }
    m_s32Film = av_find_best_stream(m_pContext, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (m_s32Film < 0) {
        avformat_close_input(&m_pContext);
        VELMO_THROW(m_strName + ": there are no pictures in it");
    }
}

/// Nothing but what films of frames come in: other formats name further files and addresses, or take memory
/// for pictures that are counted and nowhere.
void LibavInput::open(const char* formats)
{
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", formats, 0);
    const int opened = avformat_open_input(&m_pContext, "", nullptr, &options);
    av_dict_free(&options);
    requireRead(opened);
}

int LibavInput::requireRead(int code) const
{
    if (code < 0 && m_oFile.wantedMore())
        VELMO_THROW(m_strName + ": has more than " + std::to_string(headerBytes) +
                    " bytes beside its pictures");
    return require(code, m_strName);
}

/// Half as much again as a picture that is not packed.
std::uint64_t LibavInput::packetBytes() const
{
    const AVCodecParameters& picture = *film().codecpar;
    return 3 * static_cast<std::uint64_t>(std::max(picture.width, 0)) *
               static_cast<std::uint64_t>(std::max(picture.height, 0)) +
           headerBytes + indexBytes * m_u64Packets;
}

LibavInput::~LibavInput()
{
    avformat_close_input(&m_pContext);
}

bool LibavInput::next(AVPacket& packet)
{
    for (;;) {
        av_packet_unref(&packet);
        if (m_eOrigin == Origin::Elsewhere)
            m_oFile.allow(packetBytes());
        ++m_u64Packets;
        const int code = av_read_frame(m_pContext, &packet);
        if (code == AVERROR_EOF && !m_oFile.wantedMore())
            return false;
        requireRead(code);
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

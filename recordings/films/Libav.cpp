#include "recordings/films/Libav.h"

#include "recordings/ByteFile.h"

#include "core/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <limits>

namespace velmo::recordings {
namespace {

constexpr int bufferBytes = 1 << 16;
constexpr int readBufferBytes = 1 << 12; ///< what is read for nothing at each place that is sought

/// What a film may have before its first packet, and between two beside the packet: lists of empty elements
/// take up to 700 times their bytes in memory, and texts a time that grows with their square.
constexpr std::uint64_t headerBytes = 40 << 10;
constexpr std::uint64_t indexBytes = 64; ///< more than what an index has for a packet

std::string beginOf(std::FILE* file)
{
    std::string begin(headerBytes + 12, '\0'); // and the head of what begins just before
    begin.resize(std::fread(begin.data(), 1, begin.size(), file));
    std::rewind(file);
    return begin;
}

/// Only Matroska has to be sought in before its first packet, for texts at its end. The others would read
/// their whole index.
bool isMatroska(const std::string& begin)
{
    return begin.compare(0, 4, "\x1a\x45\xdf\xa3") == 0;
}

/// For each text of a list in an AVI, memory is filled with zeros before any of it is read.
bool hasLongList(const std::string& begin)
{
    for (std::size_t at = 8; (at = begin.find("INFO", at)) != std::string::npos; ++at) {
        std::uint32_t bytes = 0;
        for (std::size_t i = 1; i <= 4; ++i)
            bytes = bytes << 8 | static_cast<unsigned char>(begin[at - i]);
        if (bytes > headerBytes && begin.compare(at - 8, 4, "LIST") == 0)
            return true;
    }
    return false;
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
    // One more than is allowed shows that there is more: what is wanted may be as large as a header says.
    const std::uint64_t most = std::min(from.allowed, static_cast<std::uint64_t>(count) - 1) + 1;
    const std::size_t got = std::fread(bytes, 1, static_cast<std::size_t>(most), from.file);
    if (got == 0)
        return std::ferror(from.file) != 0 ? AVERROR(EIO) : AVERROR_EOF;
    if (got > from.allowed) {
        from.wantedMore = true;
        from.allowed = 0;
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
        const std::string begin = beginOf(file);
        m_oFile.allow(hasLongList(begin) ? 0 : headerBytes);
        const int seekable = m_pContext->pb->seekable;
        m_pContext->pb->seekable = isMatroska(begin) ? seekable : 0;
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
    if (m_oFile.wantedMore())
        avformat_close_input(&m_pContext);
    requireRead(opened);
}

int LibavInput::requireRead(int code) const
{
    if (m_oFile.wantedMore()) // the reader of a format may go on without what it did not get
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

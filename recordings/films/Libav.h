#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstdio>
#include <memory>
#include <string>

namespace velmo::recordings {

/// What the FFmpeg libraries hand out, freed with the object.
template <class T, void (*destroy)(T**)>
struct Freed
{
    void operator()(T* object) const { destroy(&object); }
};

using Codec = std::unique_ptr<AVCodecContext, Freed<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Freed<AVPacket, av_packet_free>>;
using Image = std::unique_ptr<AVFrame, Freed<AVFrame, av_frame_free>>;
using Parameters = std::unique_ptr<AVCodecParameters, Freed<AVCodecParameters, avcodec_parameters_free>>;

/// @throws Exception  with the reason, if `code` is an error
int require(int code, const std::string& name);

/// An open file as the libraries read and write it.
class LibavFile
{
public:
    LibavFile(std::FILE* file, bool writing);
    ~LibavFile();
    LibavFile(const LibavFile&) = delete;
    LibavFile& operator=(const LibavFile&) = delete;

    AVIOContext* get() const { return m_pContext; }

    /// How many bytes may be read from here on; any number before the first call.
    void allow(std::uint64_t bytes) { m_oBytes.allowed = bytes; }

    /// Whether more were wanted.
    bool wantedMore() const { return m_oBytes.wantedMore; }

private:
    /// What the functions get that read and write for the libraries.
    struct Bytes
    {
        std::FILE* file;
        std::uint64_t allowed;
        bool wantedMore;
    };

    static int read(void* handle, std::uint8_t* bytes, int count);
    static int write(void* handle, std::uint8_t* bytes, int count);
    static std::int64_t seek(void* handle, std::int64_t offset, int whence);

    Bytes m_oBytes;
    AVIOContext* m_pContext;
};

/// Who has written a film.
enum class Origin
{
    Here,     ///< this very process: it is read back
    Elsewhere ///< somebody: a Matroska, AVI or NUT is read with bounds to what it may make of the memory
};

/// A container opened for reading; its packets are read one by one.
class LibavInput
{
public:
    /// @param file  stays open as long
    LibavInput(std::FILE* file, std::string name, Origin origin);
    ~LibavInput();
    LibavInput(const LibavInput&) = delete;
    LibavInput& operator=(const LibavInput&) = delete;

    /// The next packet of the film; false behind the last one.
    bool next(AVPacket& packet);

    const AVStream& film() const { return *m_pContext->streams[m_s32Film]; }

    /// A text of the container; empty if there is none.
    std::string text(const std::string& keyword) const;

private:
    void open(const char* formats);
    std::uint64_t packetBytes() const;
    int requireRead(int code) const;

    LibavFile m_oFile;
    std::string m_strName;
    Origin m_eOrigin;
    AVFormatContext* m_pContext;
    int m_s32Film = -1;
    std::uint64_t m_u64Packets = 0;
};

} // namespace velmo::recordings

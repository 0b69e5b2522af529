#pragma once

#include "recordings/ByteFile.h"

#include <tiffio.h>

#include <cstdarg>
#include <string>

namespace velmo::recordings {

/// libtiff on a file that stays open as long. What it complains of is kept, not printed.
class TiffHandle
{
public:
    /// @param name  what messages call the file
    /// @param mode  as TIFFOpen has it; a part of one that is read may have descriptionBytes until allow()
    /// @throws Exception  that names the file, if it is no TIFF
    TiffHandle(std::FILE* file, std::string name, const char* mode);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    operator TIFF*() const { return m_pTiff; }
    const std::string& name() const { return m_strName; }

    /// What libtiff complained of first.
    const std::string& error() const { return m_strError; }

    /// What describes a page has to do with so much: libtiff keeps it all, some of it several times.
    static constexpr std::uint64_t descriptionBytes = 4 << 20;

    /// How many bytes libtiff may read from here on.
    void allow(std::uint64_t bytes) { m_oBytes.allowed = bytes; }

    /// Whether it wanted more than that.
    bool wantedMore() const { return m_oBytes.wantedMore; }

private:
    /// What the functions get that read and write for libtiff.
    struct Bytes
    {
        std::FILE* file;
        std::uint64_t allowed;
        bool wantedMore = false;
    };

    static tmsize_t read(thandle_t handle, void* bytes, tmsize_t count);
    static tmsize_t write(thandle_t handle, void* bytes, tmsize_t count);
    static toff_t seek(thandle_t handle, toff_t offset, int whence);
    static toff_t size(thandle_t handle);
    static int note(TIFF*, void* handle, const char* module, const char* format, va_list arguments);
    static int ignore(TIFF*, void* handle, const char* module, const char* format, va_list arguments);

    Bytes m_oBytes;
    std::string m_strName;
    std::string m_strError;
    TIFF* m_pTiff = nullptr;
};

} // namespace velmo::recordings

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
    /// @param mode  as TIFFOpen has it
    /// @throws Exception  that names the file, if it is no TIFF
    TiffHandle(std::FILE* file, std::string name, const char* mode);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    operator TIFF*() const { return m_pTiff; }
    const std::string& name() const { return m_strName; }

    /// What libtiff complained of first.
    const std::string& error() const { return m_strError; }

private:
    static int note(TIFF*, void* handle, const char* module, const char* format, va_list arguments);
    static int ignore(TIFF*, void* handle, const char* module, const char* format, va_list arguments);

    std::string m_strName;
    std::string m_strError;
    TIFF* m_pTiff = nullptr;
};

} // namespace velmo::recordings

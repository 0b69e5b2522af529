#include "recordings/TiffHandle.h"

#include "core/Exception.h"

namespace velmo::recordings {
namespace {

constexpr std::uint64_t spareBytes = 16 << 20; ///< for what libtiff needs to unpack

std::FILE* fileOf(thandle_t handle)
{
    return static_cast<std::FILE*>(handle);
}

tmsize_t read(thandle_t handle, void* bytes, tmsize_t count)
{
    return static_cast<tmsize_t>(std::fread(bytes, 1, static_cast<std::size_t>(count), fileOf(handle)));
}

tmsize_t write(thandle_t handle, void* bytes, tmsize_t count)
{
    return static_cast<tmsize_t>(std::fwrite(bytes, 1, static_cast<std::size_t>(count), fileOf(handle)));
}

toff_t seek(thandle_t handle, toff_t offset, int whence)
{
    if (fseeko(fileOf(handle), static_cast<off_t>(offset), whence) != 0)
        return static_cast<toff_t>(-1);
    return static_cast<toff_t>(ftello(fileOf(handle)));
}

int leaveOpen(thandle_t)
{
    return 0;
}

toff_t size(thandle_t handle)
{
    const off_t here = ftello(fileOf(handle));
    const std::uint64_t bytes = sizeOf(fileOf(handle));
    fseeko(fileOf(handle), here, SEEK_SET);
    return bytes;
}

} // namespace

TiffHandle::TiffHandle(std::FILE* file, std::string name, const char* mode) : m_strName(std::move(name))
{
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr)
        VELMO_THROW(m_strName + ": not enough memory");
    TIFFOpenOptionsSetErrorHandlerExtR(options, note, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, ignore, this);
    if (mode[0] == 'r') // no table in it can be larger than the file
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(2 * sizeOf(file) + spareBytes));
    m_pTiff = TIFFClientOpenExt(m_strName.c_str(), mode, file, read, write, seek, leaveOpen, size, nullptr,
                                nullptr, options);
    TIFFOpenOptionsFree(options);
    if (m_pTiff == nullptr)
        VELMO_THROW(m_strName + ": not a TIFF: " + m_strError);
}

TiffHandle::~TiffHandle()
{
    TIFFClose(m_pTiff);
}

int TiffHandle::note(TIFF*, void* handle, const char*, const char* format, va_list arguments)
{
    auto& error = static_cast<TiffHandle*>(handle)->m_strError;
    if (error.empty()) { // what comes later follows from it
        char text[200];
        std::vsnprintf(text, sizeof text, format, arguments);
        error = text;
    }
    return 1; // dealt with: nothing is printed
}

int TiffHandle::ignore(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

} // namespace velmo::recordings

#include "recordings/TiffHandle.h"

#include "core/Exception.h"

#include <limits>

namespace velmo::recordings {
namespace {

constexpr std::uint64_t spareBytes = 16 << 20; ///< for what libtiff needs to unpack

int leaveOpen(thandle_t)
{
    return 0;
}

} // namespace

tmsize_t TiffHandle::read(thandle_t handle, void* bytes, tmsize_t count)
{
    auto& from = *static_cast<Bytes*>(handle);
    const auto wanted = static_cast<std::uint64_t>(count);
    if (wanted > from.allowed) {
        from.wantedMore = true;
        return 0;
    }
    from.allowed -= wanted;
    return static_cast<tmsize_t>(std::fread(bytes, 1, wanted, from.file));
}

tmsize_t TiffHandle::write(thandle_t handle, void* bytes, tmsize_t count)
{
    return static_cast<tmsize_t>(
        std::fwrite(bytes, 1, static_cast<std::size_t>(count), static_cast<Bytes*>(handle)->file));
}

toff_t TiffHandle::seek(thandle_t handle, toff_t offset, int whence)
{
    std::FILE* const file = static_cast<Bytes*>(handle)->file;
    if (fseeko(file, static_cast<off_t>(offset), whence) != 0)
        return static_cast<toff_t>(-1);
    return static_cast<toff_t>(ftello(file));
}

toff_t TiffHandle::size(thandle_t handle)
{
    std::FILE* const file = static_cast<Bytes*>(handle)->file;
    const off_t here = ftello(file);
    const std::uint64_t bytes = sizeOf(file);
    fseeko(file, here, SEEK_SET);
    return bytes;
}

TiffHandle::TiffHandle(std::FILE* file, std::string name, const char* mode)
    : m_oBytes{file, mode[0] == 'r' ? descriptionBytes : std::numeric_limits<std::uint64_t>::max()},
      m_strName(std::move(name))
{
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr)
        VELMO_THROW(m_strName + ": not enough memory");
    TIFFOpenOptionsSetErrorHandlerExtR(options, note, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, ignore, this);
    if (mode[0] == 'r') // no table in it can be larger than the file
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(2 * sizeOf(file) + spareBytes));
    m_pTiff = TIFFClientOpenExt(m_strName.c_str(), mode, &m_oBytes, read, write, seek, leaveOpen, size,
                                nullptr, nullptr, options);
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

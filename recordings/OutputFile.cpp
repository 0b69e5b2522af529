#include "recordings/OutputFile.h"

#include "recordings/ByteOrder.h"

#include "core/Exception.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace velmo::recordings {

OutputFile::OutputFile(const std::string& path, std::string name)
    : OutputFile(ByteFile(std::fopen(path.c_str(), "w+be")), std::move(name))
{}

OutputFile::OutputFile(ByteFile file, std::string name) : m_pFile(std::move(file)), m_strName(std::move(name))
{
    if (!m_pFile)
        refuse();
}

OutputFile OutputFile::standardOutput()
{
    // Of its own, so that closing it says whether all was written.
    return {ByteFile(fdopen(dup(STDOUT_FILENO), "wb")), "standard output"};
}

void OutputFile::write(const void* bytes, std::size_t count)
{
    if (std::fwrite(bytes, 1, count, m_pFile.get()) != count)
        refuse();
}

void OutputFile::write(const cv::Mat& image, bool bigEndian)
{
    const cv::Mat ordered = inOrder(image, bigEndian);
    const std::size_t bytes = static_cast<std::size_t>(ordered.cols) * ordered.elemSize();
    if (ordered.isContinuous())
        return write(ordered.data, bytes * static_cast<std::size_t>(ordered.rows));
    for (int r = 0; r < ordered.rows; ++r)
        write(ordered.ptr(r), bytes);
}

void OutputFile::finish()
{
    const bool good = std::ferror(m_pFile.get()) == 0 && std::fflush(m_pFile.get()) == 0;
    if (!good || std::fclose(m_pFile.release()) != 0)
        refuse();
}

void OutputFile::refuse() const
{
    const int reason = errno;
    VELMO_THROW(m_strName + ": cannot be written" +
                (reason == 0 ? "" : std::string(": ") + std::strerror(reason)));
}

} // namespace velmo::recordings

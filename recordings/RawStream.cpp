#include "recordings/RawStream.h"

#include "core/Exception.h"

#include <filesystem>
#include <utility>

namespace velmo::recordings {

namespace fs = std::filesystem;

RawStream::RawStream(std::vector<std::string> files, std::size_t bytesPerFrame, std::string frameName)
    : m_vecFiles(std::move(files)), m_nBytesPerFrame(bytesPerFrame), m_strFrameName(std::move(frameName))
{
    std::size_t frames = 0;
    for (const std::string& file : m_vecFiles) {
        if (!fs::is_regular_file(file))
            return;
        frames += countIn(file);
    }
    m_nCount = frames;
}

bool RawStream::next(unsigned char* bytes)
{
    while (m_nNext < m_vecFiles.size() || m_oFile.is_open()) {
        if (!m_oFile.is_open())
            openNext();
        if (read(bytes))
            return true;
        m_oFile.close();
    }
    return false;
}

std::size_t RawStream::countIn(const std::string& file) const
{
    const std::size_t bytes = fs::file_size(file);
    if (bytes == 0 || bytes % m_nBytesPerFrame != 0)
        VELMO_THROW(file + ": " + std::to_string(bytes) + " bytes are no whole number of " + m_strFrameName +
                    " of " + std::to_string(m_nBytesPerFrame) + " bytes");
    return bytes / m_nBytesPerFrame;
}

void RawStream::openNext()
{
    m_strOpen = m_vecFiles[m_nNext++];
    m_oFile.open(m_strOpen == "-" ? "/dev/stdin" : m_strOpen, std::ios::binary);
    if (!m_oFile)
        VELMO_THROW(m_strOpen + ": cannot be read");
}

bool RawStream::read(unsigned char* bytes)
{
    m_oFile.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(m_nBytesPerFrame));
    const auto got = static_cast<std::size_t>(m_oFile.gcount());
    // A camera that is switched off stops anywhere; its frames so far are good.
    if (got > 0 && got < m_nBytesPerFrame)
        m_strRemark = m_strOpen + ": the last frame is cut off (" + std::to_string(got) + " of " +
                      std::to_string(m_nBytesPerFrame) + " bytes) and left out";
    return got == m_nBytesPerFrame;
}

} // namespace velmo::recordings

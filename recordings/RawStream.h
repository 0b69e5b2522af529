#pragma once

#include <cstddef>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace velmo::recordings {

/// Frames of a fixed number of bytes, one behind the other, in one or several files. "-" is standard input.
class RawStream
{
public:
    /// @param frameName  what one is, for messages: "640x480 frames"
    /// @throws Exception  if a file is not a whole number of frames
    RawStream(std::vector<std::string> files, std::size_t bytesPerFrame, std::string frameName);

    /// The next frame; false after the last one.
    /// @param bytes  room for one frame
    /// @throws Exception  that names the file, if it cannot be read
    bool next(unsigned char* bytes);

    /// Known only if all of them are files: a pipe has no size.
    std::optional<std::size_t> count() const { return m_nCount; }

    const std::vector<std::string>& files() const { return m_vecFiles; }

    /// Says that the last frame was cut off, if it was.
    const std::string& remark() const { return m_strRemark; }

private:
    std::size_t countIn(const std::string& file) const;
    void openNext();
    bool read(unsigned char* bytes);

    std::vector<std::string> m_vecFiles;
    std::size_t m_nBytesPerFrame;
    std::string m_strFrameName;
    std::optional<std::size_t> m_nCount;
    std::size_t m_nNext = 0;
    std::string m_strOpen;
    std::ifstream m_oFile;
    std::string m_strRemark;
};

} // namespace velmo::recordings

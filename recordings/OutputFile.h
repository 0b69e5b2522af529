#pragma once

#include "recordings/ByteFile.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <string>

namespace velmo::recordings {

/// A file that is being written. No failed write is lost: what `write` does not notice, `finish` does.
class OutputFile
{
public:
    /// @param path  becomes an empty file that can be read back while it is written
    /// @param name  what messages call it: the target, where the path is a name for the time of writing
    /// @throws Exception  that names it, if it cannot be written; so do the others
    OutputFile(const std::string& path, std::string name);

    /// What is piped or printed.
    static OutputFile standardOutput();

    void write(const void* bytes, std::size_t count);
    void write(const std::string& text) { write(text.data(), text.size()); }

    /// Writes the values of an image row by row.
    void write(const cv::Mat& image, bool bigEndian = false);

    /// Everything is in the file, or an error says why not. Nothing can be written behind this.
    void finish();

    /// For libraries that write by themselves.
    std::FILE* get() const { return m_pFile.get(); }
    const std::string& name() const { return m_strName; }

    /// @throws Exception  with what the system says of the last call that failed
    [[noreturn]] void refuse() const;

private:
    OutputFile(ByteFile file, std::string name);

    ByteFile m_pFile;
    std::string m_strName;
};

} // namespace velmo::recordings

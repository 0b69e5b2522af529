#pragma once

#include "recordings/OutputFile.h"
#include "recordings/PartialPath.h"

#include <opencv2/core.hpp>

#include <string>

namespace velmo::recordings {

/// A file of bare bytes: the pixels of images, one behind the other. It gets its name only by finish(); what
/// happens before that leaves the target as it was.
class RawSink
{
public:
    /// @throws Exception  that names the path, if it cannot be written
    explicit RawSink(const std::string& path);

    void write(const cv::Mat& image);
    void write(const std::string& text);
    void finish();

private:
    PartialPath m_oPartial;
    OutputFile m_oFile;
};

/// A whole file of these bytes.
void writeFile(const std::string& path, const std::string& bytes);

} // namespace velmo::recordings

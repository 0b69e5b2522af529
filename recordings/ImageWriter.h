#pragma once

#include <opencv2/core.hpp>

namespace velmo::recordings {

/// Writes images of one size and type into one file, one by one; whoever opens it says which type.
class ImageWriter
{
public:
    virtual ~ImageWriter() = default;

    /// @throws Exception  that names the file, if it cannot take the image
    virtual void write(const cv::Mat& image) = 0;

    /// The file is complete, or an error says why not; nothing can be written behind this.
    virtual void finish() = 0;
};

} // namespace velmo::recordings

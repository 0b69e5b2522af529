#pragma once

#include <opencv2/core.hpp>

namespace velmo::recordings {

/// Takes images of one type, one by one, into a file or a folder; whoever opens it says which type. In one
/// file they are of one size.
class ImageWriter
{
public:
    virtual ~ImageWriter() = default;

    /// @throws Exception  that names the file, if it cannot take the image
    virtual void write(const cv::Mat& image) = 0;

    /// All is written, or an error says why not; nothing can be written behind this.
    virtual void finish() = 0;
};

} // namespace velmo::recordings

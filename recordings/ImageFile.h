#pragma once

#include <opencv2/core.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace velmo::recordings {

/// A file of grey images of one kind, decoded one by one; of one that holds many, one is in memory.
class ImageFile
{
public:
    virtual ~ImageFile() = default;

    /// The next image, in memory of its own; false after the last one.
    /// @param image  counts as the file has them, CV_16UC1 (those of 8 bits too), or degrees Celsius,
    /// CV_32FC1
    /// @throws Exception  that names the file, if it is broken or holds something else
    virtual bool next(cv::Mat& image) = 0;

    /// How many images there are, if that is known without decoding them.
    virtual std::optional<std::size_t> count() const = 0;

    /// Whether its images are degrees.
    virtual bool holdsDegrees() const { return false; }

    /// What a count means, in the words of the file; empty if it does not say.
    virtual std::string unit() const { return {}; }
};

/// Opens PGM, PNG, TIFF, .npy and films of grey values; what a file is, its first bytes say.
/// @throws Exception  that names the file
std::unique_ptr<ImageFile> openImageFile(const std::string& path);

/// How many images the file holds, if that is known without decoding them.
/// @throws Exception  that names the file
std::optional<std::size_t> countImages(const std::string& path);

} // namespace velmo::recordings

#pragma once

#include "camera/Picture.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace velmo::recordings {

using camera::Picture;

class PartialPath;

/// Where pictures go. They are written under another name beside the target and get their own only by
/// finish(): whatever happens before that leaves the target as it was and nothing beside it.
class PictureSink
{
public:
    virtual ~PictureSink() = default;

    /// Colours, or grey values of 16 bits, which a film does not take.
    virtual void write(const cv::Mat& picture) = 0;
    virtual void finish() = 0;
};

/// A folder of pictures, as those of a sink, under names of their own; appears, or joins the folder that is
/// there, when finished.
class PictureFolder
{
public:
    /// @throws Exception  that names the path, if it cannot be such a folder
    explicit PictureFolder(const std::string& path);
    ~PictureFolder();

    void write(const std::string& name, const cv::Mat& picture);
    void finish();

private:
    std::string m_strPath;
    std::unique_ptr<PartialPath> m_pPartial;
};

/// @param path      a .png for one picture, a film (.mp4, .mkv, .avi), or else a folder: frame_0000.png and
/// so on
/// @param expected  how many pictures will come, if that is known
/// @param fps       pictures per second of a film
/// @throws Exception  that names the path, if it cannot take the pictures
std::unique_ptr<PictureSink> openSink(const std::string& path, std::optional<std::size_t> expected,
                                      double fps);

/// The same for frames: grey values of 16 bits, which fit a .png or a folder of them.
std::unique_ptr<PictureSink> openFrameSink(const std::string& path, std::optional<std::size_t> expected);

/// One picture that is a whole command's result.
void writePicture(const std::string& path, const Picture& picture);

} // namespace velmo::recordings

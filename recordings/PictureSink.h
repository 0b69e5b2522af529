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

    /// Colours, or grey values: whichever the sink was opened for.
    virtual void write(const cv::Mat& picture) = 0;
    virtual void finish() = 0;
};

/// A folder of pictures, as those of a sink, under names of their own; appears, or joins the folder that is
/// there, when finished.
class PictureFolder
{
public:
    /// @param unit  what the counts of frames mean; empty for nothing
    /// @throws Exception  that names the path, if it cannot be such a folder
    explicit PictureFolder(const std::string& path, std::string unit = "");
    ~PictureFolder();

    /// @param name  ends in .png or, for frames, .pgm
    void write(const std::string& name, const cv::Mat& picture);
    void finish();

private:
    std::string m_strPath;
    std::string m_strUnit;
    std::unique_ptr<PartialPath> m_pPartial;
};

/// @param path      a .png for one picture, a film (.mp4, .mkv, .avi), or else a folder: frame_0000.png and
/// so on
/// @param expected  how many pictures will come, if that is known
/// @param fps       pictures per second of a film
/// @throws Exception  that names the path, if it cannot take the pictures
std::unique_ptr<PictureSink> openSink(const std::string& path, std::optional<std::size_t> expected,
                                      double fps);

/// How frames are kept where a path leaves a choice.
struct FrameFormat
{
    bool pgm = false;     ///< in folders: PGM files, not PNG
    bool degrees = false; ///< they are degrees Celsius in floats, CV_32FC1: .tiff and .npy alone take them
    double fps = 9;       ///< frames per second of an .mkv
    std::string unit;     ///< what a count means; empty for nothing
};

/// The same for frames, CV_16UC1: one goes to a .png or .pgm, many to a .tiff, .npy, .raw, .mkv, a folder, or
/// to
/// "-", which is standard output and takes raw ones. All come back bit for bit.
/// @throws Exception  that names the path, if it cannot take the frames
std::unique_ptr<PictureSink> openFrameSink(const std::string& path, std::optional<std::size_t> expected,
                                           const FrameFormat& format = {});

/// One picture that is a whole command's result.
void writePicture(const std::string& path, const Picture& picture);

} // namespace velmo::recordings

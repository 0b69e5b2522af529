#pragma once

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"
#include "recordings/ImageWriter.h"
#include "recordings/OutputFile.h"

#include <memory>
#include <string>

namespace velmo::recordings {

/// How a film is kept. Counts, CV_16UC1, go into Mkv only, where they keep every bit; pictures are blue,
/// green, red, CV_8UC3.
struct FilmFormat
{
    enum class Container
    {
        Avi, ///< Motion JPEG
        Mkv, ///< FFV1: nothing is lost
        Mp4  ///< H.264; an odd side is padded by one
    };

    Container container = Container::Avi;
    double fps = 9;   ///< pictures per second, as exactly as the container can say it
    std::string unit; ///< what a count means; empty for nothing
};

/// Films and pictures by the FFmpeg libraries. They bring many others with them: a module of its own, which
/// is loaded when the first film is asked for. It prints nothing.
class Films
{
public:
    virtual ~Films() = default;

    /// A film of grey values, 16 or 8 bits: Matroska, AVI or NUT, by FFV1 or not packed.
    /// @param name  what messages call it
    virtual std::unique_ptr<ImageFile> open(ByteFile file, const std::string& name) const = 0;

    /// Its finish() reads the film back: every picture is there, at the rate that was asked for.
    virtual std::unique_ptr<ImageWriter> create(OutputFile file, const FilmFormat& format) const = 0;

    /// A JPEG, BMP or Netpbm picture, upright if it says how it lies.
    virtual cv::Mat_<cv::Vec3b> readColours(ByteFile file, const std::string& name) const = 0;
};

/// Loads the module: beside the program, or where the libraries are installed.
/// @throws Exception  if it cannot be loaded
const Films& films();

} // namespace velmo::recordings

#include "recordings/PictureSink.h"

#include "recordings/FileList.h"
#include "recordings/Films.h"
#include "recordings/GreyWriters.h"
#include "recordings/PngFile.h"
#include "recordings/ThreadedSink.h"

#include "core/Exception.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace velmo::recordings {
namespace {

namespace fs = std::filesystem;

void writeOne(OutputFile file, const std::string& ending, const cv::Mat& picture, const std::string& unit)
{
    if (ending == ".pgm")
        writePgm(std::move(file), picture, unit);
    else
        writePng(std::move(file), picture, unit);
}

/// One picture or frame, as a PNG or PGM.
class OnePicture : public ImageWriter
{
public:
    OnePicture(Outputs& outputs, const std::string& path, std::optional<std::size_t> expected,
               std::string unit = "")
        : m_strPath(path), m_strUnit(std::move(unit)), m_oFile(outputs.file(path))
    {
        if (expected.value_or(1) > 1)
            refuseMany();
    }

    void write(const cv::Mat& picture) override
    {
        if (m_bWritten)
            refuseMany();
        writeOne(std::move(m_oFile), endingOf(m_strPath), picture, m_strUnit);
        m_bWritten = true;
    }

    void finish() override {}

private:
    [[noreturn]] void refuseMany() const
    {
        VELMO_THROW(m_strPath + ": holds one picture, there are more; name a folder or a file for many");
    }

    std::string m_strPath;
    std::string m_strUnit;
    OutputFile m_oFile;
    bool m_bWritten = false;
};

class NumberedPictures : public ImageWriter
{
public:
    NumberedPictures(Outputs& outputs, const std::string& path, std::optional<std::size_t> expected,
                     std::string ending = ".png", std::string unit = "")
        : m_oOutputs(outputs), m_oFolder(path), m_strEnding(std::move(ending)), m_strUnit(std::move(unit))
    {
        outputs.folder(path);
        for (std::size_t i = 0; i < expected.value_or(0); ++i)
            outputs.refuseInput(target(i)); // before hours of work
    }

    void write(const cv::Mat& picture) override
    {
        writeOne(m_oOutputs.file(target(m_nNext++)), m_strEnding, picture, m_strUnit);
    }

    void finish() override {}

private:
    std::string target(std::size_t index) const
    {
        char name[32];
        std::snprintf(name, sizeof name, "frame_%04zu", index);
        return m_oFolder / (name + m_strEnding);
    }

    Outputs& m_oOutputs;
    fs::path m_oFolder;
    std::string m_strEnding;
    std::string m_strUnit;
    std::size_t m_nNext = 0;
};

std::optional<FilmFormat::Container> containerOf(const std::string& ending)
{
    if (ending == ".avi")
        return FilmFormat::Container::Avi;
    if (ending == ".mkv")
        return FilmFormat::Container::Mkv;
    if (ending == ".mp4")
        return FilmFormat::Container::Mp4;
    return std::nullopt;
}

/// Whether a name says that it is of a format that is not written here, rather than a folder's.
bool isOfAnotherFormat(const std::string& ending)
{
    const char* const endings[] = {".jpg", ".jpeg", ".bmp", ".gif", ".tif", ".tiff", ".pgm", ".ppm", ".webp",
                                   ".mov", ".webm", ".avi", ".mp4", ".mkv", ".npy",  ".raw", ".nut"};
    return std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
}

/// Files of a chosen format are those of a folder; one that is named says by its ending what it is.
void requireFolder(const std::string& path, const std::string& ending, const std::string& files)
{
    const bool one = path == "-" || ending == ".png" || isOfAnotherFormat(ending);
    if (one && !files.empty() && ending != '.' + files)
        VELMO_THROW("'" + path + "': one file; the format " + files + " is for those of a folder");
}

std::string endingOfFile(const std::string& path)
{
    return fs::is_directory(path) ? "" : endingOf(path);
}

} // namespace

std::unique_ptr<ImageWriter> openSink(Outputs& outputs, const std::string& path,
                                      std::optional<std::size_t> expected, double fps)
{
    const std::string ending = endingOfFile(path);
    if (ending == ".png")
        return std::make_unique<OnePicture>(outputs, path, expected);
    if (const auto container = containerOf(ending))
        return std::make_unique<ThreadedSink>(films().create(outputs.file(path), {*container, fps, ""}));
    if (path.empty() || isOfAnotherFormat(ending))
        VELMO_THROW("'" + path + "': pictures go to a .png, a film (.mp4, .mkv, .avi) or a folder");
    return std::make_unique<ThreadedSink>(std::make_unique<NumberedPictures>(outputs, path, expected));
}

std::unique_ptr<ImageWriter> openFrameSink(Outputs& outputs, const std::string& path,
                                           std::optional<std::size_t> expected, const FrameFormat& format)
{
    const std::string ending = endingOfFile(path);
    requireFolder(path, ending, format.files);
    if (ending == ".tif" || ending == ".tiff")
        return createTiff(outputs.file(path), expected, format.unit);
    if (ending == ".npy")
        return createNpy(outputs.file(path));
    if (format.degrees)
        VELMO_THROW("'" + path + "': frames of degrees go to a .tiff or .npy");
    if (path == "-")
        return createRaw(OutputFile::standardOutput());
    if (ending == ".raw")
        return createRaw(outputs.file(path));
    if (ending == ".mkv")
        return films().create(outputs.file(path), {FilmFormat::Container::Mkv, format.fps, format.unit});
    if (ending == ".png" || ending == ".pgm")
        return std::make_unique<OnePicture>(outputs, path, expected, format.unit);
    if (path.empty() || isOfAnotherFormat(ending))
        VELMO_THROW("'" + path +
                    "': frames of 16 bits go to a .tiff, .npy, .raw, .mkv, .png, .pgm or a folder");
    return std::make_unique<NumberedPictures>(outputs, path, expected,
                                              format.files == "pgm" ? ".pgm" : ".png", format.unit);
}

void writePicture(Outputs& outputs, const std::string& path, const Picture& picture)
{
    if (endingOf(path) != ".png")
        VELMO_THROW("'" + path + "': this picture goes to a .png");
    writePng(outputs.file(path), picture);
}

} // namespace velmo::recordings

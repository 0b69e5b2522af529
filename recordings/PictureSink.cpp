#include "recordings/PictureSink.h"

#include "recordings/FileList.h"
#include "recordings/Films.h"
#include "recordings/GreyWriters.h"
#include "recordings/PartialPath.h"
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

/// A place that a file can take: not a folder, a device or the like.
void requireFilePlace(const std::string& path)
{
    if (fs::exists(path) && !fs::is_regular_file(path))
        VELMO_THROW(path + ": is there already, and is no file");
}

/// One picture or frame, as a PNG or PGM.
class OnePicture : public PictureSink
{
public:
    OnePicture(const std::string& path, std::optional<std::size_t> expected, std::string unit = "")
        : m_strPath(path), m_strUnit(std::move(unit)), m_oPartial(path)
    {
        requireFilePlace(path);
        if (expected.value_or(1) > 1)
            refuseMany();
    }

    void write(const cv::Mat& picture) override
    {
        if (m_bWritten)
            refuseMany();
        writeOne({m_oPartial.path(), m_strPath}, endingOf(m_strPath), picture, m_strUnit);
        m_bWritten = true;
    }

    void finish() override { m_oPartial.keep(); }

private:
    [[noreturn]] void refuseMany() const
    {
        VELMO_THROW(m_strPath + ": holds one picture, there are more; name a folder or a file for many");
    }

    std::string m_strPath;
    std::string m_strUnit;
    PartialPath m_oPartial;
    bool m_bWritten = false;
};

class NumberedPictures : public PictureSink
{
public:
    explicit NumberedPictures(const std::string& path, std::string ending = ".png", std::string unit = "")
        : m_oFolder(path, std::move(unit)), m_strEnding(std::move(ending))
    {}

    void write(const cv::Mat& picture) override
    {
        char name[32];
        std::snprintf(name, sizeof name, "frame_%04zu", m_nNext++);
        m_oFolder.write(name + m_strEnding, picture);
    }

    void finish() override { m_oFolder.finish(); }

private:
    PictureFolder m_oFolder;
    std::string m_strEnding;
    std::size_t m_nNext = 0;
};

/// One file that takes them all.
class ManyInOne : public PictureSink
{
public:
    /// @param create  makes the writer of the file that it is given
    template <class Create>
    ManyInOne(const std::string& path, const Create& create) : m_oPartial(path)
    {
        requireFilePlace(path);
        m_pWriter = create(OutputFile(m_oPartial.path(), path));
    }

    void write(const cv::Mat& picture) override { m_pWriter->write(picture); }

    void finish() override
    {
        m_pWriter->finish();
        m_oPartial.keep();
    }

private:
    PartialPath m_oPartial;
    std::unique_ptr<ImageWriter> m_pWriter;
};

/// Raw frames to where they can be piped on.
class StandardOutput : public PictureSink
{
public:
    void write(const cv::Mat& frame) override { m_pWriter->write(frame); }
    void finish() override { m_pWriter->finish(); }

private:
    std::unique_ptr<ImageWriter> m_pWriter = createRaw(OutputFile::standardOutput());
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

std::unique_ptr<PictureSink> openFilm(const std::string& path, const FilmFormat& format)
{
    return std::make_unique<ManyInOne>(
        path, [&](OutputFile file) { return films().create(std::move(file), format); });
}

/// Whether a name says that it is of a format that is not written here, rather than a folder's.
bool isOfAnotherFormat(const std::string& ending)
{
    const char* const endings[] = {".jpg", ".jpeg", ".bmp", ".gif", ".tif", ".tiff", ".pgm", ".ppm", ".webp",
                                   ".mov", ".webm", ".avi", ".mp4", ".mkv", ".npy",  ".raw", ".nut"};
    return std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
}

std::string endingOfFile(const std::string& path)
{
    return fs::is_directory(path) ? "" : endingOf(path);
}

} // namespace

PictureFolder::PictureFolder(const std::string& path, std::string unit)
    : m_strPath(path), m_strUnit(std::move(unit)), m_pPartial(std::make_unique<PartialPath>(path))
{
    if (fs::exists(path) && !fs::is_directory(path))
        VELMO_THROW(path + ": is there already, and is no folder");
    std::error_code error;
    fs::create_directory(m_pPartial->path(), error);
    if (error)
        VELMO_THROW(path + ": cannot be written: " + error.message());
}

PictureFolder::~PictureFolder() = default;

void PictureFolder::write(const std::string& name, const cv::Mat& picture)
{
    writeOne({m_pPartial->path() / name, m_strPath}, endingOf(name), picture, m_strUnit);
}

void PictureFolder::finish()
{
    m_pPartial->keep();
}

std::unique_ptr<PictureSink> openSink(const std::string& path, std::optional<std::size_t> expected,
                                      double fps)
{
    const std::string ending = endingOfFile(path);
    if (ending == ".png")
        return std::make_unique<OnePicture>(path, expected);
    if (const auto container = containerOf(ending))
        return std::make_unique<ThreadedSink>(openFilm(path, {*container, fps, ""}));
    if (path.empty() || isOfAnotherFormat(ending))
        VELMO_THROW("'" + path + "': pictures go to a .png, a film (.mp4, .mkv, .avi) or a folder");
    return std::make_unique<ThreadedSink>(std::make_unique<NumberedPictures>(path));
}

std::unique_ptr<PictureSink> openFrameSink(const std::string& path, std::optional<std::size_t> expected,
                                           const FrameFormat& format)
{
    const std::string ending = endingOfFile(path);
    if (ending == ".tif" || ending == ".tiff")
        return std::make_unique<ManyInOne>(
            path, [&](OutputFile file) { return createTiff(std::move(file), expected, format.unit); });
    if (ending == ".npy")
        return std::make_unique<ManyInOne>(path, [](OutputFile file) { return createNpy(std::move(file)); });
    if (format.degrees)
        VELMO_THROW("'" + path + "': frames of degrees go to a .tiff or .npy");
    if (path == "-")
        return std::make_unique<StandardOutput>();
    if (ending == ".raw")
        return std::make_unique<ManyInOne>(path, [](OutputFile file) { return createRaw(std::move(file)); });
    if (ending == ".mkv")
        return openFilm(path, {FilmFormat::Container::Mkv, format.fps, format.unit});
    if (ending == ".png" || ending == ".pgm")
        return std::make_unique<OnePicture>(path, expected, format.unit);
    if (path.empty() || isOfAnotherFormat(ending))
        VELMO_THROW("'" + path +
                    "': frames of 16 bits go to a .tiff, .npy, .raw, .mkv, .png, .pgm or a folder");
    return std::make_unique<NumberedPictures>(path, format.pgm ? ".pgm" : ".png", format.unit);
}

void writePicture(const std::string& path, const Picture& picture)
{
    if (endingOf(path) != ".png")
        VELMO_THROW("'" + path + "': this picture goes to a .png");
    OnePicture sink(path, 1);
    sink.write(picture);
    sink.finish();
}

} // namespace velmo::recordings

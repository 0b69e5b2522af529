#include "recordings/PictureSink.h"

#include "recordings/FileList.h"
#include "recordings/Films.h"
#include "recordings/PartialPath.h"
#include "recordings/PngFile.h"

#include "core/Exception.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace velmo::recordings {
namespace {

namespace fs = std::filesystem;

/// A place that a file can take: not a folder, a device or the like.
void requireFilePlace(const std::string& path)
{
    if (fs::exists(path) && !fs::is_regular_file(path))
        VELMO_THROW(path + ": is there already, and is no file");
}

class OnePicture : public PictureSink
{
public:
    OnePicture(const std::string& path, std::optional<std::size_t> expected)
        : m_strPath(path), m_oPartial(path)
    {
        requireFilePlace(path);
        if (expected.value_or(1) > 1)
            refuseMany();
    }

    void write(const cv::Mat& picture) override
    {
        if (m_bWritten)
            refuseMany();
        writePng({m_oPartial.path(), m_strPath}, picture);
        m_bWritten = true;
    }

    void finish() override { m_oPartial.keep(); }

private:
    [[noreturn]] void refuseMany() const
    {
        VELMO_THROW(m_strPath +
                    ": holds one picture, there are more; name a folder or a film (.mp4, .mkv, .avi)");
    }

    std::string m_strPath;
    PartialPath m_oPartial;
    bool m_bWritten = false;
};

class NumberedPictures : public PictureSink
{
public:
    explicit NumberedPictures(const std::string& path) : m_oFolder(path) {}

    void write(const cv::Mat& picture) override
    {
        char name[32];
        std::snprintf(name, sizeof name, "frame_%04zu.png", m_nNext++);
        m_oFolder.write(name, picture);
    }

    void finish() override { m_oFolder.finish(); }

private:
    PictureFolder m_oFolder;
    std::size_t m_nNext = 0;
};

class Film : public PictureSink
{
public:
    Film(const std::string& path, FilmFormat::Container container, double fps) : m_oPartial(path)
    {
        requireFilePlace(path);
        FilmFormat format;
        format.container = container;
        format.fps = fps;
        m_pFilm = films().create({m_oPartial.path(), path}, format);
    }

    void write(const cv::Mat& picture) override { m_pFilm->write(picture); }

    void finish() override
    {
        m_pFilm->finish();
        m_oPartial.keep();
    }

private:
    PartialPath m_oPartial;
    std::unique_ptr<ImageWriter> m_pFilm;
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

bool isOtherPictureOrFilm(const std::string& ending)
{
    const char* const endings[] = {".jpg", ".jpeg", ".bmp",  ".gif", ".tif", ".tiff",
                                   ".pgm", ".ppm",  ".webp", ".mov", ".webm"};
    return std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
}

} // namespace

PictureFolder::PictureFolder(const std::string& path)
    : m_strPath(path), m_pPartial(std::make_unique<PartialPath>(path))
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
    writePng({m_pPartial->path() / name, m_strPath}, picture);
}

void PictureFolder::finish()
{
    m_pPartial->keep();
}

std::unique_ptr<PictureSink> openSink(const std::string& path, std::optional<std::size_t> expected,
                                      double fps)
{
    const std::string ending = fs::is_directory(path) ? "" : endingOf(path);
    if (ending == ".png")
        return std::make_unique<OnePicture>(path, expected);
    if (const auto container = containerOf(ending))
        return std::make_unique<Film>(path, *container, fps);
    if (path.empty() || isOtherPictureOrFilm(ending))
        VELMO_THROW("'" + path + "': pictures go to a .png, a film (.mp4, .mkv, .avi) or a folder");
    return std::make_unique<NumberedPictures>(path);
}

std::unique_ptr<PictureSink> openFrameSink(const std::string& path, std::optional<std::size_t> expected)
{
    if (!fs::is_directory(path) && containerOf(endingOf(path)))
        VELMO_THROW("'" + path + "': frames of 16 bits go to a .png or a folder");
    return openSink(path, expected, 1);
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

#include "recordings/PictureSink.h"

#include "recordings/FileList.h"
#include "recordings/PartialPath.h"

#include "core/Exception.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

namespace velmo::recordings {
namespace {

namespace fs = std::filesystem;

void save(const fs::path& file, const cv::Mat& picture, const std::string& target)
{
    bool written = false;
    try {
        // A third smaller than what OpenCV chooses when nothing is said.
        written = cv::imwrite(
            file.string(), picture,
            {cv::IMWRITE_PNG_STRATEGY, cv::IMWRITE_PNG_STRATEGY_DEFAULT, cv::IMWRITE_PNG_COMPRESSION, 6});
    } catch (const cv::Exception&) {
        written = false;
    }
    if (!written)
        VELMO_THROW(target + ": cannot be written");
}

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
        save(m_oPartial.path(), picture, m_strPath);
        m_bWritten = true;
    }

    void finish() override { m_oPartial.keep(); }

private:
    [[noreturn]] void refuseMany() const
    {
        VELMO_THROW(m_strPath + ": holds one picture, there are more; name a folder or an .avi");
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
    Film(const std::string& path, double fps) : m_strPath(path), m_oPartial(path), m_dFps(fps)
    {
        requireFilePlace(path);
    }

    void write(const cv::Mat& picture) override
    {
        if (!m_oWriter.isOpened())
            open(picture.size());
        if (picture.size() != m_oSize)
            VELMO_THROW(m_strPath + ": a film has pictures of one size; name a folder instead");
        m_oWriter.write(picture);
    }

    void finish() override
    {
        m_oWriter.release();
        std::error_code error;
        // The writer itself never says that the disk is full.
        if (fs::file_size(m_oPartial.path(), error) == 0 || error)
            VELMO_THROW(m_strPath + ": cannot be written");
        m_oPartial.keep();
    }

private:
    void open(cv::Size size)
    {
        m_oSize = size;
        // OpenCV's own writer: there on every machine, whatever codecs that has.
        m_oWriter.open(m_oPartial.path().string(), cv::CAP_OPENCV_MJPEG,
                       cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), m_dFps, size);
        if (!m_oWriter.isOpened())
            VELMO_THROW(m_strPath + ": cannot be written");
    }

    std::string m_strPath;
    PartialPath m_oPartial;
    double m_dFps;
    cv::Size m_oSize;
    cv::VideoWriter m_oWriter;
};

bool isOtherPictureOrFilm(const std::string& ending)
{
    const char* const endings[] = {".jpg", ".jpeg", ".bmp", ".gif", ".tif", ".tiff", ".pgm",
                                   ".ppm", ".webp", ".mp4", ".mkv", ".mov", ".webm"};
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
    save(m_pPartial->path() / name, picture, m_strPath);
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
    if (ending == ".avi")
        return std::make_unique<Film>(path, fps);
    if (path.empty() || isOtherPictureOrFilm(ending))
        VELMO_THROW("'" + path + "': pictures go to a .png, an .avi or a folder");
    return std::make_unique<NumberedPictures>(path);
}

std::unique_ptr<PictureSink> openFrameSink(const std::string& path, std::optional<std::size_t> expected)
{
    if (!fs::is_directory(path) && endingOf(path) == ".avi")
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

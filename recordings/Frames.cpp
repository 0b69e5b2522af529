#include "recordings/Frames.h"

#include "recordings/FileList.h"
#include "recordings/RawStream.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

namespace velmo::recordings {
namespace {

const std::vector<std::string> pictureEndings = {".pgm", ".png", ".tif", ".tiff"};

/// Sends standard error nowhere: the picture libraries report a broken file there, in lines of their own,
/// whatever the program has to say about it.
class StandardErrorMuted
{
public:
    StandardErrorMuted() : m_s32Original(dup(STDERR_FILENO))
    {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nowhere >= 0) {
            dup2(nowhere, STDERR_FILENO);
            close(nowhere);
        }
    }
    ~StandardErrorMuted()
    {
        if (m_s32Original >= 0) {
            dup2(m_s32Original, STDERR_FILENO);
            close(m_s32Original);
        }
    }
    StandardErrorMuted(const StandardErrorMuted&) = delete;
    StandardErrorMuted& operator=(const StandardErrorMuted&) = delete;

private:
    int m_s32Original;
};

void requireReadable(const std::string& path)
{
    if (!std::ifstream(path, std::ios::binary))
        VELMO_THROW(path + ": cannot be read");
}

/// What the picture libraries make of a file; empty if nothing.
cv::Mat read(const std::string& path, int flags)
{
    const StandardErrorMuted muted;
    try {
        return cv::imread(path, flags);
    } catch (const cv::Exception&) { // larger than they take
        return {};
    }
}

/// A picture as it is in the file, or none.
cv::Mat decode(const std::string& path)
{
    cv::Mat picture;
    try {
        exp::ImageDecoderPxM netpbm;
        if (netpbm.open(path)) {
            netpbm.grab(picture);
            return picture;
        }
        return read(path, cv::IMREAD_UNCHANGED);
    } catch (const exp::Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

class PictureFrames : public FrameSource
{
public:
    PictureFrames(std::string name, std::vector<std::string> files)
        : m_strName(std::move(name)), m_vecFiles(std::move(files))
    {}

    bool next(Frame& frame) override
    {
        if (m_nNext == m_vecFiles.size())
            return false;
        frame = readFrame(m_vecFiles[m_nNext++]);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_vecFiles.size(); }
    std::string name() const override { return m_strName; }

private:
    std::string m_strName;
    std::vector<std::string> m_vecFiles;
    std::size_t m_nNext = 0;
};

/// Frames of little-endian values.
class RawFrames : public FrameSource
{
public:
    RawFrames(std::string name, std::vector<std::string> files, cv::Size size)
        : m_strName(std::move(name)), m_oSize(size),
          m_oStream(std::move(files), 2 * static_cast<std::size_t>(size.area()),
                    std::to_string(size.width) + "x" + std::to_string(size.height) + " frames")
    {}

    bool next(Frame& frame) override
    {
        if (!m_oStream.next(m_vecBytes))
            return false;
        frame = Frame(m_oSize); // not create: that would reuse memory that the last frame's user holds
        std::size_t i = 0;
        for (unsigned short& pixel : frame) {
            pixel = static_cast<unsigned short>(m_vecBytes[i] | m_vecBytes[i + 1] << 8);
            i += 2;
        }
        return true;
    }

    std::optional<std::size_t> count() const override { return m_oStream.count(); }
    std::string remark() const override { return m_oStream.remark(); }
    std::string name() const override { return m_strName; }

private:
    std::string m_strName;
    cv::Size m_oSize;
    RawStream m_oStream;
    std::vector<unsigned char> m_vecBytes;
};

} // namespace

std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& inputs,
                                        const std::optional<cv::Size>& raw)
{
    if (inputs.empty())
        VELMO_THROW("there is no input");
    const std::string name = inputs.size() == 1
                                 ? inputs.front()
                                 : inputs.front() + " and " + std::to_string(inputs.size() - 1) + " more";
    if (!raw) {
        if (std::find(inputs.begin(), inputs.end(), "-") != inputs.end())
            VELMO_THROW("standard input is read as raw frames: their size is needed");
        return std::make_unique<PictureFrames>(name, listFiles(inputs, pictureEndings));
    }
    if (inputs == std::vector<std::string>{"-"})
        return std::make_unique<RawFrames>("standard input", inputs, *raw);
    return std::make_unique<RawFrames>(name, listFiles(inputs, {}), *raw);
}

Frame readFrame(const std::string& path)
{
    requireReadable(path);
    cv::Mat picture = decode(path);
    if (picture.empty())
        VELMO_THROW(path + ": not a whole PGM, PNG or TIFF picture");
    if (picture.channels() != 1 || (picture.depth() != CV_16U && picture.depth() != CV_8U))
        VELMO_THROW(path + ": not a frame of 16-bit grey values (it has " +
                    std::to_string(picture.channels()) + " channels of " +
                    std::to_string(8 * picture.elemSize1()) + " bits)");
    picture.convertTo(picture, CV_16U); // 8-bit values as they are
    return picture;
}

Picture readPicture(const std::string& path)
{
    requireReadable(path);
    cv::Mat picture = read(path, cv::IMREAD_COLOR);
    if (picture.empty())
        VELMO_THROW(path + ": not a picture that can be read");
    return picture;
}

} // namespace velmo::recordings

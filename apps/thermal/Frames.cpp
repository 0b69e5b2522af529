#include "apps/thermal/Frames.h"

#include "apps/thermal/Error.h"
#include "apps/thermal/FileList.h"
#include "apps/thermal/Interrupt.h"
#include "apps/thermal/Parse.h"
#include "apps/thermal/Progress.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <opencv2/imgcodecs.hpp>

#include <CLI/App.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <fcntl.h>
#include <unistd.h>

namespace thermal {
namespace {

namespace fs = std::filesystem;

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
        throw UsageError(path + ": cannot be read");
}

/// A picture as it is in the file, or none.
cv::Mat decode(const std::string& path)
{
    cv::Mat picture;
    try {
        velmo::exp::ImageDecoderPxM netpbm;
        if (netpbm.open(path)) {
            netpbm.grab(picture);
            return picture;
        }
        const StandardErrorMuted muted;
        return cv::imread(path, cv::IMREAD_UNCHANGED);
    } catch (const velmo::exp::Exception& error) {
        throw UsageError(path + ": " + error.what());
    } catch (const cv::Exception&) {
        return {}; // larger than the picture libraries take
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

/// Frames of little-endian values, one behind the other, in one or several files.
class RawFrames : public FrameSource
{
public:
    RawFrames(std::string name, std::vector<std::string> files, cv::Size size)
        : m_strName(std::move(name)), m_vecFiles(std::move(files)), m_oSize(size)
    {
        // Known beforehand only if all of them are files: a pipe has no size.
        std::size_t frames = 0;
        for (const std::string& file : m_vecFiles) {
            if (!fs::is_regular_file(file))
                return;
            frames += countIn(file);
        }
        m_nCount = frames;
    }

    bool next(Frame& frame) override
    {
        while (m_nNext < m_vecFiles.size() || m_oFile.is_open()) {
            if (!m_oFile.is_open())
                openNext();
            if (read(frame))
                return true;
            m_oFile.close();
        }
        return false;
    }

    std::optional<std::size_t> count() const override { return m_nCount; }
    std::string name() const override { return m_strName; }

private:
    std::size_t bytesPerFrame() const
    {
        return std::size_t{2} * static_cast<std::size_t>(m_oSize.width) *
               static_cast<std::size_t>(m_oSize.height);
    }

    std::size_t countIn(const std::string& file) const
    {
        const std::size_t bytes = fs::file_size(file);
        if (bytes == 0 || bytes % bytesPerFrame() != 0)
            throw UsageError(file + ": " + std::to_string(bytes) + " bytes are no whole number of " +
                             std::to_string(m_oSize.width) + "x" + std::to_string(m_oSize.height) +
                             " frames of " + std::to_string(bytesPerFrame()) + " bytes");
        return bytes / bytesPerFrame();
    }

    void openNext()
    {
        m_strOpen = m_vecFiles[m_nNext++];
        m_oFile.open(m_strOpen == "-" ? "/dev/stdin" : m_strOpen, std::ios::binary);
        if (!m_oFile)
            throw UsageError(m_strOpen + ": cannot be read");
    }

    bool read(Frame& frame)
    {
        std::vector<unsigned char> bytes(bytesPerFrame());
        m_oFile.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        checkInterrupt();
        const auto got = static_cast<std::size_t>(m_oFile.gcount());
        if (got < bytes.size()) {
            // A camera that is switched off stops anywhere; its frames so far are good.
            if (got > 0)
                std::cerr << "thermal: " << m_strOpen << ": the last frame is cut off (" << got << " of "
                          << bytes.size() << " bytes) and left out" << std::endl;
            return false;
        }
        frame = Frame(m_oSize); // not create: that would reuse memory that the last frame's user holds
        auto pixel = frame.begin();
        for (std::size_t i = 0; i < bytes.size(); i += 2, ++pixel)
            *pixel = static_cast<unsigned short>(bytes[i] | bytes[i + 1] << 8);
        return true;
    }

    std::string m_strName;
    std::vector<std::string> m_vecFiles;
    cv::Size m_oSize;
    std::optional<std::size_t> m_nCount;
    std::size_t m_nNext = 0;
    std::string m_strOpen;
    std::ifstream m_oFile;
};

} // namespace

void InputOptions::addTo(CLI::App& command)
{
    command
        .add_option("INPUT", inputs,
                    "16-bit PGM, PNG or TIFF files, a folder of them, or a quoted pattern like 'run/*.pgm'; "
                    "with --raw also raw files, or - for standard input")
        ->required();
    command.add_option("--raw", raw, "The inputs are raw frames of this size, 16-bit little-endian values")
        ->type_name("WxH");
}

std::unique_ptr<FrameSource> openFrames(const InputOptions& options)
{
    const std::string name =
        options.inputs.size() == 1
            ? options.inputs.front()
            : options.inputs.front() + " and " + std::to_string(options.inputs.size() - 1) + " more";
    if (options.raw.empty()) {
        if (std::find(options.inputs.begin(), options.inputs.end(), "-") != options.inputs.end())
            throw UsageError("standard input is read as raw frames: give their size with --raw WxH");
        return std::make_unique<PictureFrames>(name, listFiles(options.inputs, pictureEndings));
    }
    const cv::Size size = parseSize(options.raw, "--raw");
    if (options.inputs == std::vector<std::string>{"-"})
        return std::make_unique<RawFrames>("standard input", options.inputs, size);
    return std::make_unique<RawFrames>(name, listFiles(options.inputs, {}), size);
}

Frame readFrame(const std::string& path)
{
    requireReadable(path);
    cv::Mat picture = decode(path);
    if (picture.empty())
        throw UsageError(path + ": not a whole PGM, PNG or TIFF picture");
    if (picture.channels() != 1 || (picture.depth() != CV_16U && picture.depth() != CV_8U))
        throw UsageError(path + ": not a frame of 16-bit grey values (it has " +
                         std::to_string(picture.channels()) + " channels of " +
                         std::to_string(8 * picture.elemSize1()) + " bits)");
    picture.convertTo(picture, CV_16U); // 8-bit values as they are
    return picture;
}

void forEachFrame(FrameSource& source, bool quiet, const std::function<void(Frame&)>& use)
{
    Progress progress(source.name(), source.count(), quiet);
    bool any = false;
    for (Frame frame; checkInterrupt(), source.next(frame); progress.step()) {
        any = true;
        use(frame);
    }
    if (!any)
        throw UsageError(source.name() + ": no frames");
}

} // namespace thermal

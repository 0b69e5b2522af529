#include "recordings/Frames.h"

#include "recordings/FileList.h"
#include "recordings/FrameFiles.h"
#include "recordings/RawFrames.h"

#include "core/Exception.h"

#include <algorithm>

namespace velmo::recordings {
namespace {

// No films: the pictures of a recording often lie beside its frames.
const std::vector<std::string> frameEndings = {".pgm", ".png", ".tif", ".tiff", ".npy"};

/// Some rows of the frames of another source.
class SomeRows : public FrameSource
{
public:
    SomeRows(std::unique_ptr<FrameSource> source, cv::Range rows)
        : m_pSource(std::move(source)), m_oRows(rows)
    {}

    bool next(Frame& frame) override
    {
        if (!m_pSource->next(frame))
            return false;
        if (m_oRows.start < 0 || m_oRows.end > frame.rows || m_oRows.end <= m_oRows.start)
            VELMO_THROW(name() + ": there are no rows " + std::to_string(m_oRows.start) + " to " +
                        std::to_string(m_oRows.end) + " in frames of " + std::to_string(frame.rows));
        frame = frame.rowRange(m_oRows);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_pSource->count(); }
    std::string name() const override { return m_pSource->name(); }
    std::vector<std::string> files() const override { return m_pSource->files(); }
    std::string unit() const override { return m_pSource->unit(); }
    std::string remark() const override { return m_pSource->remark(); }

private:
    std::unique_ptr<FrameSource> m_pSource;
    cv::Range m_oRows;
};

std::unique_ptr<FrameSource> openWhole(const std::vector<std::string>& inputs, const ReadOptions& options)
{
    if (inputs.empty())
        VELMO_THROW("there is no input");
    const std::string name = inputs.size() == 1
                                 ? inputs.front()
                                 : inputs.front() + " and " + std::to_string(inputs.size() - 1) + " more";
    if (!options.raw) {
        if (std::find(inputs.begin(), inputs.end(), "-") != inputs.end())
            VELMO_THROW("standard input is read as raw frames: their size is needed");
        return openFrameFiles(name, listFiles(inputs, frameEndings), !options.anyUnit);
    }
    if (inputs == std::vector<std::string>{"-"})
        return openRawFrames("standard input", inputs, *options.raw);
    return openRawFrames(name, listFiles(inputs, {}), *options.raw);
}

} // namespace

std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& inputs, const ReadOptions& options)
{
    auto source = openWhole(inputs, options);
    if (options.rows)
        return std::make_unique<SomeRows>(std::move(source), *options.rows);
    return source;
}

} // namespace velmo::recordings

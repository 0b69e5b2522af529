#pragma once

#include "camera/Frame.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmo::recordings {

using camera::Frame;

/// Where frames come from, one by one.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// The next frame, in memory of its own; false after the last one.
    /// @throws Exception  that names the file, if it cannot be read
    virtual bool next(Frame& frame) = 0;

    /// How many frames there are in all, if that is known beforehand.
    virtual std::optional<std::size_t> count() const { return std::nullopt; }

    /// A name for headings: the folder or file.
    virtual std::string name() const = 0;

    /// The files that are read.
    virtual std::vector<std::string> files() const { return {}; }

    /// What a value means, in the words of whoever wrote the recording ("centikelvin"); empty if it does not
    /// say. Known before the first frame.
    virtual std::string unit() const { return {}; }

    /// What there is to say when no more comes, such as a last frame that is cut off; mostly nothing.
    virtual std::string remark() const { return {}; }
};

} // namespace velmo::recordings

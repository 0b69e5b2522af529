#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// One step of the way from a raw frame to a clean one. Holds the state of one stream.
class VELMO_API Stage
{
public:
    virtual ~Stage();

    /// For tables and headings: "temporal 8:1900".
    virtual std::string name() const = 0;

    /// Works on the next frame of the stream in place; may give it another size.
    virtual void apply(Frame& frame) = 0;
};

} // namespace velmo::camera

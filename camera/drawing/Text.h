#pragma once

#include "camera/Picture.h"

#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// Room that a line of text takes, from the top of its capitals to their foot.
constexpr int s32TextHeight = 9;

VELMO_API int textWidth(const std::string& text);

/// Draws a line of ASCII text and degree signs ("°") with the upper left corner of its capitals there.
VELMO_API void drawText(Picture& picture, const std::string& text, cv::Point corner,
                        const cv::Scalar& colour);

} // namespace velmo::camera

#pragma once

#include "recordings/PictureSink.h"

#include <string>

namespace thermal {

/// Room that a line of text takes, from the top of its capitals to their foot.
constexpr int s32TextHeight = 9;

int textWidth(const std::string& text);

/// Draws a line of ASCII text and degree signs ("°") with the upper left corner of its capitals there.
void drawText(Picture& picture, const std::string& text, cv::Point corner, const cv::Scalar& colour);

} // namespace thermal

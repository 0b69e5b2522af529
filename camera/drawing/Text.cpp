#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

namespace velmo::camera {
namespace {

constexpr int s32Font = cv::FONT_HERSHEY_SIMPLEX;
constexpr double dFontScale = 0.4;
constexpr int s32DegreeWidth = 6;
const std::string degreeSign = "°";

int plainWidth(const std::string& text)
{
    int below = 0;
    return text.empty() ? 0 : cv::getTextSize(text, s32Font, dFontScale, 1, &below).width;
}

} // namespace

int textWidth(const std::string& text)
{
    const std::size_t degree = text.find(degreeSign);
    if (degree == std::string::npos)
        return plainWidth(text);
    return plainWidth(text.substr(0, degree)) + s32DegreeWidth +
           textWidth(text.substr(degree + degreeSign.size()));
}

void drawText(Picture& picture, const std::string& text, cv::Point corner, const cv::Scalar& colour)
{
    const std::size_t degree = text.find(degreeSign);
    const std::string start = text.substr(0, degree);
    cv::putText(picture, start, corner + cv::Point(0, s32TextHeight), s32Font, dFontScale, colour, 1,
                cv::LINE_AA);
    if (degree == std::string::npos)
        return;
    // The font knows ASCII alone.
    const int end = corner.x + plainWidth(start);
    cv::circle(picture, {end + 2, corner.y + 2}, 2, colour, 1, cv::LINE_AA);
    drawText(picture, text.substr(degree + degreeSign.size()), {end + s32DegreeWidth, corner.y}, colour);
}

} // namespace velmo::camera

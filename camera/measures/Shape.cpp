#include "camera/measures/Shape.h"

#include "camera/settings/Parse.h"
#include "core/Exception.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace velmo::camera {
namespace {

using Mask = cv::Mat_<unsigned char>;

constexpr double dMaxPlace = 16383;
constexpr std::size_t nMaxCorners = 1000;
constexpr std::array names = {"spot", "box", "line", "polygon", "whole"};

Field placeField(const char* name)
{
    return {name, Field::Kind::Whole, 0, dMaxPlace};
}

cv::Point pointOf(double x, double y)
{
    return {static_cast<int>(x), static_cast<int>(y)};
}

/// As many places as a text has, every second number a Y, but not fewer than `least` and not more than
/// `most`.
std::vector<cv::Point> parsePlaces(const std::string& text, const std::string& what, std::size_t least,
                                   std::size_t most)
{
    const auto commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
    Form form;
    for (std::size_t i = 0; i < std::clamp(commas / 2 + 1, least, most); ++i) {
        form.push_back(placeField("X"));
        form.push_back(placeField("Y"));
    }
    const std::vector<double> numbers = parseForm(text, what, form, ',');
    std::vector<cv::Point> points;
    for (std::size_t i = 0; i < numbers.size(); i += 2)
        points.push_back(pointOf(numbers[i], numbers[i + 1]));
    return points;
}

void requireInside(const cv::Rect& box, cv::Size frame, const std::string& name)
{
    const auto require = [&](const char* axis, int value, int last) {
        if (value < 0 || value > last)
            VELMO_THROW(name + ": reaches to " + axis + " " + std::to_string(value) + ", frames of " +
                        sizeText(frame) + " have 0 to " + std::to_string(last));
    };
    require("column", box.x, frame.width - 1);
    require("column", box.br().x - 1, frame.width - 1);
    require("row", box.y, frame.height - 1);
    require("row", box.br().y - 1, frame.height - 1);
}

void drawLine(Mask& mask, cv::Point from, cv::Point to)
{
    cv::LineIterator line(mask, from, to, 8, true); // the same pixels whichever end comes first
    for (int i = 0; i < line.count; ++i, ++line)
        mask(line.pos()) = 1;
}

/// Pixels whose middle is inside by the rule of even and odd crossings.
void fill(Mask& mask, const std::vector<cv::Point>& corners)
{
    for (int y = 0; y < mask.rows; ++y) {
        std::vector<double> crossings;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const cv::Point a = corners[i], b = corners[(i + 1) % corners.size()];
            // The lower end belongs to the next edge, so that no corner counts twice.
            if (y >= std::min(a.y, b.y) && y < std::max(a.y, b.y))
                crossings.push_back(a.x + static_cast<double>((y - a.y) * (b.x - a.x)) / (b.y - a.y));
        }
        std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
            for (int x = cvCeil(crossings[i]); x <= cvFloor(crossings[i + 1]); ++x)
                mask(y, x) = 1;
    }
}

std::vector<Run> runsOf(const Mask& mask, cv::Point corner)
{
    std::vector<Run> runs;
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0, end = 0; x < mask.cols; x = end) {
            while (end < mask.cols && mask(y, end) == mask(y, x))
                ++end;
            if (mask(y, x))
                runs.push_back({corner.y + y, corner.x + x, corner.x + end});
        }
    return runs;
}

} // namespace

Shape::Shape(Kind kind, std::vector<cv::Point> points, double radius)
    : m_eKind(kind), m_vecPoints(std::move(points)), m_dRadius(radius)
{}

Shape Shape::parse(Kind kind, const std::string& text)
{
    const std::string what = names[static_cast<std::size_t>(kind)];
    switch (kind) {
    case Kind::Spot: {
        const std::size_t colon = text.find(':');
        const double radius =
            colon == std::string::npos ? 0 : parseNumber(text.substr(colon + 1), what + " R", 0, dMaxPlace);
        return {kind, parsePlaces(text.substr(0, colon), what, 1, 1), radius};
    }
    case Kind::Box: {
        const Form form = {placeField("X"),
                           placeField("Y"),
                           {"W", Field::Kind::Whole, 1, dMaxPlace + 1},
                           {"H", Field::Kind::Whole, 1, dMaxPlace + 1}};
        const std::vector<double> box = parseForm(text, what, form, ',');
        const cv::Point corner = pointOf(box[0], box[1]);
        return {kind, {corner, corner + pointOf(box[2] - 1, box[3] - 1)}, 0};
    }
    case Kind::Line:
        return {kind, parsePlaces(text, what, 2, 2), 0};
    case Kind::Polygon:
        return {kind, parsePlaces(text, what, 3, nMaxCorners), 0};
    default:
        return {kind, {}, 0};
    }
}

const char* Shape::kindName() const
{
    return names[static_cast<std::size_t>(m_eKind)];
}

cv::Rect Shape::bounds(cv::Size frame) const
{
    if (m_eKind == Kind::Whole)
        return {{}, frame};
    cv::Rect box = cv::boundingRect(m_vecPoints);
    const int reach = cvFloor(m_dRadius);
    return {box.x - reach, box.y - reach, box.width + 2 * reach, box.height + 2 * reach};
}

std::vector<Run> Shape::runs(cv::Size frame, const std::string& name) const
{
    const cv::Rect box = bounds(frame);
    requireInside(box, frame, name);
    Mask mask = Mask::zeros(box.size());
    std::vector<cv::Point> points = m_vecPoints;
    for (cv::Point& point : points)
        point -= box.tl();
    switch (m_eKind) {
    case Kind::Spot:
        for (int y = 0; y < mask.rows; ++y)
            for (int x = 0; x < mask.cols; ++x) {
                const cv::Point d = cv::Point(x, y) - points[0];
                mask(y, x) = d.dot(d) <= m_dRadius * m_dRadius;
            }
        break;
    case Kind::Polygon:
        fill(mask, points);
        drawLine(mask, points.back(), points.front());
        [[fallthrough]];
    case Kind::Line:
        for (std::size_t i = 1; i < points.size(); ++i)
            drawLine(mask, points[i - 1], points[i]);
        break;
    default:
        mask = 1;
    }
    return runsOf(mask, box.tl());
}

} // namespace velmo::camera

#include "camera/pixels/PixelMap.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"

#include <sstream>

namespace velmo::camera {

const std::vector<PixelReason>& pixelReasons()
{
    static const std::vector<PixelReason> reasons = {
        {"spread", exp::vision::BadPixelTools::u32BadHomogenity, {60, 60, 255}},
        {"rows and columns", exp::vision::BadPixelTools::u32BadRowCol, {0, 220, 255}},
        {"monotony", exp::vision::BadPixelTools::u32BadCurve, {255, 80, 255}},
        {"netd", exp::vision::BadPixelTools::u32BadNetd, {255, 200, 0}}};
    return reasons;
}

std::string reasonsOf(int flags, const std::vector<PixelReason>& reasons)
{
    std::string names;
    for (const PixelReason& reason : reasons)
        if (static_cast<unsigned>(flags) & reason.flag)
            names += (names.empty() ? "" : "+") + std::string(reason.name);
    return names.empty() ? std::to_string(flags) : names;
}

std::string pixelList(const PixelMap& map)
{
    std::ostringstream text;
    text << "x,y,flags,reasons\n";
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (map(y, x) != 0)
                text << x << ',' << y << ',' << map(y, x) << ',' << reasonsOf(map(y, x)) << '\n';
    return text.str();
}

PixelMap parsePixelList(const std::string& text, cv::Size size)
{
    PixelMap map(size, 0);
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const bool heading = number == 1 && !line.empty() && line.front() == 'x';
        if (line.empty() || heading)
            continue;
        const std::vector<std::string> fields = split(line, ',');
        const std::string what = "line " + std::to_string(number);
        if (fields.size() < 2)
            VELMO_THROW(what + ": x,y is needed");
        const Form place = {{"x", Field::Kind::Whole, 0, double(size.width - 1)},
                            {"y", Field::Kind::Whole, 0, double(size.height - 1)}};
        const std::vector<double> at = parseForm(fields[0] + "," + fields[1], what, place, ',');
        int flags = exp::vision::BadPixelTools::u32BadHomogenity;
        if (fields.size() > 2)
            flags =
                static_cast<int>(parseForm(fields[2], what, {{"flags", Field::Kind::Whole, 1, 65535}})[0]);
        map(static_cast<int>(at[1]), static_cast<int>(at[0])) |= flags;
    }
    return map;
}

} // namespace velmo::camera

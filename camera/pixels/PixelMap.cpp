#include "camera/pixels/PixelMap.h"

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

} // namespace velmo::camera

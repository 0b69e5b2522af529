#pragma once

#include "camera/temperature/Thermometer.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>

namespace velmo::camera {

/// A band of values that is painted in a colour of its own over the palette.
struct VELMO_API Isotherm
{
    unsigned short low; ///< both included
    unsigned short high;
    cv::Vec3b colour;  ///< blue, green, red
    bool blend;        ///< only its tone: as bright as the palette is there
    std::string label; ///< what it says in the legend: "above 37.5 °C"

    /// @param text  above:LOW:RRGGBB (LOW itself does not belong to it), below:HIGH:RRGGBB (nor does HIGH)
    ///              or between:LOW:HIGH:RRGGBB (both do); each may end in :blend or :solid
    /// @param what  begins the message of what is refused
    /// @param thermometer  knows what LOW and HIGH are as values of frames
    /// @throws Exception  for anything else, and where no value lies in the band
    static Isotherm parse(const std::string& text, const std::string& what, const Thermometer& thermometer);

    /// LOW:HIGH:RRGGBB: the short form of between.
    static Isotherm parseRegion(const std::string& text, const std::string& what,
                                const Thermometer& thermometer);

    /// What a value of this palette colour is painted in.
    cv::Vec3b over(const cv::Vec3b& palette) const;
};

} // namespace velmo::camera

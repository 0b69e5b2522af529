// Not installed.
#pragma once

#include <vector>

/// Built before objects of ordinary priority, so that the start-up code of other sources may use it.
#define VELMO_BUILT_EARLY __attribute__((init_priority(101)))

namespace velmo::vision {

/// Colour points of the built-in palettes: red, green, blue, the coldest first.
extern const std::vector<unsigned char> ms_vecGrayscale;
extern const std::vector<unsigned char> ms_vecGrayscaleInv;
extern const std::vector<unsigned char> ms_vecRainbow;
extern const std::vector<unsigned char> ms_vecRainbowhc;
extern const std::vector<unsigned char> ms_vecHotcold;
extern const std::vector<unsigned char> ms_vecBluered;
extern const std::vector<unsigned char> ms_vecSepia;
extern const std::vector<unsigned char> ms_vecVelmo;
extern const std::vector<unsigned char> ms_vecDewpoint;
extern const std::vector<unsigned char> ms_vecHumidity;
extern const std::vector<unsigned char> ms_vecIronbow;
extern const std::vector<unsigned char> ms_vecHightemp;

} // namespace velmo::vision

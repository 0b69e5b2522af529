// Bad pixels from a frame to a map file and back.
#include "vision/imgproc/BadPixel.h"

#include <opencv2/imgcodecs.hpp>

#include <cstdio>

using namespace velmo::exp::vision;

int main(int, char** argv)
{
    cv::Mat_<short> wall(180, 240, static_cast<short>(8000));
    wall(40, 30) = wall(90, 239) = 0;
    cv::Mat_<int> map;
    BadPixelTools::detectBadPixelHistogram(wall, map, 5);
    const std::vector<BadPixel> records = BadPixelTools::calculateReplacePixels(map, 20);

    const std::string file = std::string(argv[0]) + ".pgm";
    cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat(records);
    // Unsigned: of a signed image only 8 bits would be stored.
    cv::imwrite(file, cv::Mat(image.size(), CV_16UC1, image.data, image.step));
    const bool same = BadPixelTools::loadBadPixelFromPxm(file) == records;
    std::remove(file.c_str());
    std::printf("%zu bad pixels, %s\n", records.size(),
                same ? "and the same from the file" : "another list from the file");
    return records.size() == 2 && same ? 0 : 1;
}

// A program that brings what the radiometry of its camera and the air of its own physics come to.

#include "core/physics/DewPoint.h"
#include "tests/Support.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/radiometry/RadiometricTools.h"

namespace {

int calls = 0;
float percent = 0; // of the warmer half
std::size_t missing = 0;

} // namespace

float velmo::vision::RadiometricTools::getFloat(unsigned short value)
{
    ++calls;
    return static_cast<float>(value);
}

std::vector<float>
velmo::exp::DewPoint::calcSurfaceMoisture(const std::vector<float>& surfaces,
                                          const quantity::Temperature<MarkedFloat>& /*air*/,
                                          const quantity::Relation<MarkedFloat>& /*humidity*/)
{
    std::vector<float> moisture;
    for (const float surface : surfaces)
        moisture.push_back(surface < 30000 ? 0.0f : percent);
    moisture.resize(moisture.size() - missing);
    return moisture;
}

TEST(Platform, GetsItsOwnHumidityColours)
{
    using namespace velmo::vision;
    ColorPaletteConverter converter(false);
    const ColorPaletteConverter::Frame frame = (ColorPaletteConverter::Frame(1, 4) << 0, 29999, 30000, 65535);
    ColorPaletteConverter::Picture picture;
    std::vector<unsigned char> palette{1, 1, 1, 9, 9, 9};
    const auto show = [&](float warm, std::size_t tooFew) {
        percent = warm;
        missing = tooFew;
        calls = 0;
        converter.palletizeHumid(frame, picture, ColorPaletteConverter::AirTemperature(20.0f),
                                 ColorPaletteConverter::AirHumidity(50.0f), true, palette);
    };
    show(100, 0);
    EXPECT_EQ(calls, 65536);
    EXPECT_TRUE(same(picture, (cv::Mat_<cv::Vec3b>(1, 4) << cv::Vec3b(1, 1, 1), cv::Vec3b(1, 1, 1),
                               cv::Vec3b(9, 9, 9), cv::Vec3b(9, 9, 9))));
    for (const auto& [warm, tooFew] : {std::pair(100.5f, 0u), {-0.5f, 0u}, {NAN, 0u}, {100.0f, 1u}})
        EXPECT_THROW(show(warm, tooFew), velmo::exp::Exception) << warm;
}

// A whole camera, from the raw frame to the picture.
#include "vision/imgproc/ColorPaletteManager.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"

#include <cstdio>

using namespace velmo::exp::vision;
using namespace velmo::vision;

class Camera
{
public:
    /// @param frame  240 x 180 raw values, signed
    const cv::Mat_<cv::Vec3b>& show(const cv::Mat_<short>& frame)
    {
        m_pattern.process(frame, m_clean);
        m_temporal.process(m_clean);
        m_spatial.process(m_clean, m_smooth);
        m_smooth.convertTo(m_values, CV_16U); // raw values of this sensor are never negative
        // Range and palette stay: the table is built with the first frame only.
        m_converter.palletize(m_values, m_picture, 7000, 9000, m_first, m_palette);
        m_first = false;
        return m_picture;
    }

private:
    StaticPatternRemover m_pattern{15, 8, 4};
    TemporalNoiseReduction<short> m_temporal{16, 1843};
    SpatialNoiseRemover m_spatial{4};
    ColorPaletteConverter m_converter{true}; // blue, green, red, as OpenCV has it
    std::vector<unsigned char> m_palette = ColorPaletteManager::getPaletteColors("Ironbow");
    cv::Mat_<short> m_clean, m_smooth;
    cv::Mat_<unsigned short> m_values;
    cv::Mat_<cv::Vec3b> m_picture;
    bool m_first = true;
};

int main()
{
    Camera camera;
    cv::Mat_<short> frame(180, 240);
    for (int n = 0; n < 50; ++n) {
        cv::randn(frame, 8000, 5); // a wall, and the noise of the sensor
        camera.show(frame);
    }
    const cv::Vec3b colour = camera.show(frame)(90, 120);
    std::printf("the wall is #%02X%02X%02X\n", colour[2], colour[1], colour[0]);
    return colour[2] > colour[0] ? 0 : 1; // Ironbow is more red than blue in its middle
}

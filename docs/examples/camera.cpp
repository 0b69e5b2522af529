// A whole camera, from the raw frame to the picture.
#include "camera/Camera.h"

#include <cstdio>

int main()
{
    velmo::camera::Settings settings; // or Settings::read of a file that `thermal settings` wrote
    settings.set("noise/denoise", "normal");
    settings.set("colours/range", "7000:9000");
    velmo::camera::Camera camera(settings);

    velmo::camera::Frame raw(180, 240);
    for (int n = 0; n < 50; ++n) {
        cv::randn(raw, 8000, 5); // a wall, and the noise of the sensor
        camera.show(raw);
    }
    const cv::Vec3b colour = camera.show(raw)(90, 120);
    std::printf("the wall is #%02X%02X%02X\n", colour[2], colour[1], colour[0]);
    return colour[2] > colour[0] ? 0 : 1; // Ironbow is more red than blue in its middle
}

#include "bench/Scene.h"

#include <cmath>
#include <random>

cv::Mat_<unsigned short> scene(cv::Size size, unsigned seed)
{
    std::mt19937 stripeRandom(99), noiseRandom(seed);
    std::normal_distribution<float> stripe(0, 15), pixelNoise(0, 5);
    cv::Mat_<float> stripes(1, size.width);
    for (float& value : stripes)
        value = stripe(stripeRandom);

    cv::Mat_<unsigned short> frame(size);
    for (int r = 0; r < size.height; ++r)
        for (int c = 0; c < size.width; ++c) {
            const float x = static_cast<float>(c) / static_cast<float>(size.width);
            const float y = static_cast<float>(r) / static_cast<float>(size.height);
            float value = 7900.0f + 600.0f * x + 300.0f * y;
            if (std::hypot(x - 0.3f, y - 0.4f) < 0.12f)
                value += 900.0f;
            if (std::abs(x - 0.7f) < 0.08f && std::abs(y - 0.6f) < 0.2f)
                value += 700.0f;
            frame(r, c) = static_cast<unsigned short>(value + stripes(c) + pixelNoise(noiseRandom));
        }
    return frame;
}

cv::Mat_<unsigned short> noise(cv::Size size, unsigned seed)
{
    std::mt19937 random(seed);
    cv::Mat_<unsigned short> frame(size);
    for (unsigned short& value : frame)
        value = static_cast<unsigned short>(random());
    return frame;
}

cv::Mat_<short> asSigned(const cv::Mat_<unsigned short>& frame)
{
    return cv::Mat_<short>(frame.rows, frame.cols,
                           reinterpret_cast<short*>(const_cast<unsigned short*>(frame[0])), frame.step)
        .clone();
}

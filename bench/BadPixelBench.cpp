#include "vision/imgproc/BadPixel.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/BadPixelKernel.h"

#include <opencv2/imgproc.hpp>

#include <cstring>
#include <memory>
#include <random>

using namespace velmo::exp::vision;

namespace {

using Map = cv::Mat_<int>;

constexpr unsigned long minCount = 20;

/// One pixel in a thousand reads nothing.
cv::Mat_<unsigned short> withDeadPixels(cv::Mat_<unsigned short> frame)
{
    std::mt19937 random(1);
    for (std::size_t n = 0; n < frame.total() / 1000; ++n)
        frame.at<unsigned short>(static_cast<int>(random() % static_cast<unsigned>(frame.rows)),
                                 static_cast<int>(random() % static_cast<unsigned>(frame.cols))) = 0;
    return frame;
}

/// Spread of a frame by the library, by the plain form and by the operations at hand.
struct Spread
{
    explicit Spread(const cv::Mat_<unsigned short>& frame)
        : counts(frame), values(asSigned(frame)), map(frame.size(), 0)
    {}

    bool agrees()
    {
        Map expected(values.size(), 0);
        const unsigned long flagged = flagSpread.plain(values, expected, minCount);
        return BadPixelTools::detectBadPixelHistogram(values, map, minCount) == flagged &&
               cv::countNonZero(map != expected) == 0;
    }

    /// The mean is known to it, and where the core ends.
    void peer()
    {
        const int bins = static_cast<int>(spreadBinCount), channel = 0;
        const float range[] = {0, 65536};
        const float* ranges = range;
        cv::calcHist(&counts, 1, &channel, cv::noArray(), histogram, 1, &bins, &ranges);
        cv::inRange(counts, 7700, 9900, mask);
    }

    cv::Mat counts;
    cv::Mat_<short> values;
    Map map;
    cv::Mat histogram, mask;
};

Job spread(const cv::Mat_<unsigned short>& frame)
{
    const auto data = std::make_shared<Spread>(frame);
    Job job(10 * frame.total(), frame.total());
    job.check(data->agrees());
    job.ours([data] { BadPixelTools::detectBadPixelHistogram(data->values, data->map, minCount); });
    job.plain([data] { flagSpread.plain(data->values, data->map, minCount); });
    job.peer("calcHist+inRange", [data] { data->peer(); });
    return job;
}

Job spreadOfScene(cv::Size size)
{
    Job job = spread(withDeadPixels(scene(size)));
    if (size.width == 640)
        job.atLeast(2.3, "plain").atMost(0.75, "calcHist+inRange");
    return job;
}

Job spreadOfNoise(cv::Size size)
{
    return spread(noise(size));
}

/// A map with 5 % of its pixels bad, searched by the library and pixel by pixel through the lists.
struct Search
{
    static constexpr int s32Radius = 20;

    explicit Search(cv::Size size) : map(size, 0)
    {
        std::mt19937 random(2);
        for (int& pixel : map)
            pixel = random() % 20 == 0 ? 64 : 0;
    }

    void ours()
    {
        found = {}; // its memory can be taken again
        found = BadPixelTools::calculateReplacePixels(map, s32Radius);
    }

    void plain()
    {
        const auto query = BadPixelTools::computeReplacePixelQuery(s32Radius);
        walk([&](BadPixel& record) { BadPixelTools::calculateSingleReplacePixel(map, query, record); });
    }

    /// What any search has to do: visit the map and keep a record of each bad pixel.
    void pass()
    {
        walk([](BadPixel& record) { record.setStandardReplacePixel(); });
    }

    bool agrees()
    {
        ours();
        const auto expected = found;
        plain();
        return found.size() == expected.size() &&
               std::memcmp(found.data(), expected.data(), found.size() * sizeof(BadPixel)) == 0;
    }

    template <class Fill>
    void walk(Fill fill)
    {
        found = {};
        for (int y = 0; y < map.rows; ++y)
            for (int x = 0; x < map.cols; ++x)
                if (map(y, x) != 0) {
                    BadPixel& record = found.emplace_back();
                    record.pixel = {static_cast<short>(x), static_cast<short>(y)};
                    fill(record);
                }
    }

    Map map;
    std::vector<BadPixel> found;
};

Job neighbours(cv::Size size)
{
    const auto data = std::make_shared<Search>(size);
    Job job(4 * data->map.total() + data->map.total(), data->map.total()); // a record for every 20th pixel
    job.check(data->agrees());
    job.ours([data] { data->ours(); });
    job.plain([data] { data->plain(); });
    job.peer("one pass", [data] { data->pass(); });
    if (size.width == 1280)
        job.atMost(4, "one pass");
    return job;
}

const Registration ofScene("bad pixels by spread", spreadOfScene);
const Registration ofNoise("bad pixels by spread, random", spreadOfNoise);
const Registration search("replacement pixels", neighbours, {{640, 480}, {1280, 1024}});

} // namespace

#include "vision/imgproc/BadPixel.h"

#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/kernels/BadPixelKernel.h"

#include <benchmark/benchmark.h>
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

Job spread(const cv::Mat_<unsigned short>& frame)
{
    const cv::Mat_<short> values = asSigned(frame);
    Job job(10 * frame.total(), frame.total());
    job.loop(flagSpread,
             [=, map = Map(frame.size(), 0)](auto& form) mutable { form(values, map, minCount); });
    // The mean is known to it, and where the core ends.
    job.peer("calcHist+inRange", [frame, histogram = cv::Mat(), mask = cv::Mat()]() mutable {
        const int bins = static_cast<int>(spreadBinCount), channel = 0;
        const float range[] = {0, 65536};
        const float* ranges = range;
        cv::calcHist(&frame, 1, &channel, cv::noArray(), histogram, 1, &bins, &ranges);
        cv::inRange(frame, 7700, 9900, mask);
    });
    // What nothing can do without: additions, each of which waits for the one before.
    job.peer("sum", [values] {
        float sum = 0;
        for (const short* value = values[0]; value != values[0] + values.total(); ++value)
            sum += *value;
        benchmark::DoNotOptimize(sum);
    });
    return job;
}

Job spreadOfScene(cv::Size size)
{
    Job job = spread(withDeadPixels(scene(size)));
    if (size.width == 640)
        job.atLeast(3.2, "plain").atMost(1.6, "sum").atMost(0.75, "calcHist+inRange").instructions(10.5);
    return job;
}

Job spreadOfNoise(cv::Size size)
{
    Job job = spread(noise(size));
    if (size.width == 240)
        job.atLeast(2.5, "plain");
    return job;
}

/// A map searched by the library and pixel by pixel through the lists.
struct Search
{
    static constexpr int s32Radius = 20;

    /// @param perMille  bad pixels, at random places
    Search(cv::Size size, unsigned perMille) : map(size, 0)
    {
        std::mt19937 random(2);
        for (int& pixel : map)
            pixel = random() % 1000 < perMille ? 64 : 0;
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

Job search(cv::Size size, unsigned perMille, double times)
{
    const auto data = std::make_shared<Search>(size, perMille);
    const std::size_t pixels = data->map.total();
    Job job(4 * pixels + 20 * pixels * perMille / 1000, pixels);
    job.check(data->agrees());
    job.ours([data] { data->ours(); });
    job.plain([data] { data->plain(); });
    job.peer("one pass", [data] { data->pass(); });
    return times > 0 ? job.atLeast(times, "plain") : job;
}

Job few(cv::Size size)
{
    return search(size, 10, 1.4);
}

Job many(cv::Size size)
{
    return search(size, 50, 1.2);
}

Job none(cv::Size size)
{
    return search(size, 0, 0);
}

/// A block of dead pixels in the middle of the map: what is left are its rims.
Job deadBlock(cv::Size size)
{
    const auto map = std::make_shared<Map>(size, 0);
    (*map)(cv::Rect(20, 20, size.width - 40, size.height - 40)) = 64;
    const auto count = static_cast<std::size_t>(cv::countNonZero(*map));
    Job job(4 * map->total() + 20 * count, count);
    const unsigned int radius = 1000;
    job.ours([=] { BadPixelTools::calculateReplacePixels(*map, radius); });
    return job.atLeast(0.015, "distanceTransform")
        .peer("distanceTransform", [map, distances = cv::Mat()]() mutable {
            cv::distanceTransform(*map != 0, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
        });
}

/// Frames of a series, and rows of a map of bad pixels.
Job falling(cv::Size size)
{
    const cv::Mat_<short> before = asSigned(scene(size, 1)), after = asSigned(scene(size, 2));
    const auto count = static_cast<int>(before.total());
    Job job(12 * before.total(), before.total());
    return job.loop(flagFallen, [=, flags = Map(size, 0)](auto& form) mutable {
        form(before[0], after[0], flags[0], count);
    });
}

/// A few in each row.
Map sparseFlags(cv::Size size)
{
    Map flags(size, 0);
    for (int n = 0; n < size.area(); n += 37)
        flags(n / size.width, n % size.width) = 64;
    return flags;
}

Job counting(cv::Size size)
{
    const Map flags = sparseFlags(size);
    Job job(4 * flags.total(), flags.total());
    return job.loop(countBad, [=, columns = std::vector<unsigned int>(static_cast<std::size_t>(size.width))](
                                  auto& form) mutable {
        for (int r = 0; r < flags.rows; ++r)
            benchmark::DoNotOptimize(form(flags[r], columns.data(), flags.cols));
    });
}

Job finding(cv::Size size)
{
    const Map flags = sparseFlags(size);
    Job job(4 * flags.total(), flags.total());
    return job.loop(
        findBad, [=, columns = std::vector<int>(static_cast<std::size_t>(size.width))](auto& form) mutable {
            for (int r = 0; r < flags.rows; ++r)
                benchmark::DoNotOptimize(form(flags[r], columns.data(), flags.cols));
        });
}

const std::vector<cv::Size> searchSizes = {{640, 480}, {1280, 1024}};
const Registration ofScene("bad pixels by spread", spreadOfScene);
const Registration ofNoise("bad pixels by spread, random", spreadOfNoise);
const Registration searchNone("replacement pixels, none", none, searchSizes);
const Registration searchFew("replacement pixels, 1 %", few, searchSizes);
const Registration searchMany("replacement pixels, 5 %", many, searchSizes);
const Registration searchBlock("replacement pixels, dead block", deadBlock, {{640, 480}});
const Registration ofSeries("bad pixels by monotony", falling);
const Registration ofLines("bad rows and columns", counting);
const Registration ofRows("bad pixels of a row", finding);

} // namespace

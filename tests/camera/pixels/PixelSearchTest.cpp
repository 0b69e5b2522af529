#include "camera/pixels/PixelSearch.h"

#include "camera/pixels/OddSpots.h"
#include "tests/camera/Support.h"

#include <opencv2/imgproc.hpp>

#include <array>

namespace {

using Frames = std::vector<Frame>;

class Random
{
public:
    explicit Random(unsigned seed) : m_oGenerator(seed) {}

    double operator()(double low, double high) { return low + (high - low) * m_oGenerator() / 4294967296.0; }
    int below(int limit) { return static_cast<int>((*this)(0, limit)); }
    bool coin() { return below(2) == 1; }
    double normal()
    {
        double sum = -6; // the same on every machine
        for (int i = 0; i < 12; ++i)
            sum += (*this)(0, 1);
        return sum;
    }

private:
    std::mt19937 m_oGenerator;
};

unsigned short clip(double value)
{
    return static_cast<unsigned short>(std::clamp(std::lround(value), 0L, 16383L));
}

/// A camera that sways over things of all sizes, which its lens blurs; noise of two counts, stripes of one.
Frames scene(unsigned seed, int count = 40)
{
    Random random(seed);
    cv::Mat_<float> world(160, 190, 7000.0F);
    for (int n = 0; n < 40; ++n) {
        const cv::Point corner{random.below(190), random.below(160)};
        const cv::Size size{1 + random.below(25), 1 + random.below(25)};
        const float level = static_cast<float>(7000 + random(-100, 100));
        n % 2 == 0 ? cv::rectangle(world, {corner, size}, level, cv::FILLED)
                   : cv::ellipse(world, corner, size / 2, random(0, 180), 0, 360, level, cv::FILLED);
    }
    cv::GaussianBlur(world, world, {}, 1.1);
    std::vector<double> stripes;
    for (int x = 0; x < 128; ++x)
        stripes.push_back(random.normal());
    Frames frames;
    for (int n = 0; n < count; ++n) {
        const cv::Point at(25 + static_cast<int>(20 * std::sin(0.21 * n)),
                           20 + static_cast<int>(15 * std::cos(0.3 * n)));
        frames.push_back(matrixOf<unsigned short>({128, 96}, [&](int y, int x) {
            return clip(world(at + cv::Point(x, y)) + stripes[static_cast<std::size_t>(x)] +
                        2 * random.normal());
        }));
    }
    return frames;
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

/// The median distance of the 5 x 5 values around a pixel from their median; of several frames, their median.
double deviationAt(const Frames& frames, cv::Point at)
{
    const cv::Rect box = cv::Rect(at.x - 2, at.y - 2, 5, 5) & cv::Rect({}, frames[0].size());
    std::vector<double> all;
    for (std::size_t n = 0; n < frames.size(); n += 8) {
        const Frame part = frames[n](box);
        std::vector<double> values(part.begin(), part.end());
        const double middle = median(values);
        for (double& value : values)
            value = std::abs(value - middle);
        all.push_back(median(values));
    }
    return std::max(1.0, median(all));
}

double spreadInTime(const Frames& frames, cv::Point at)
{
    std::vector<double> values;
    for (const Frame& frame : frames)
        values.push_back(frame(at));
    cv::Scalar mean, deviation;
    cv::meanStdDev(values, mean, deviation);
    return deviation[0];
}

/// What becomes of the values of a pixel in time; `size` is that of the defect.
using Spoil = std::function<void(std::vector<double>& values, double size, Random& random)>;

struct Kind
{
    const char* name;
    int width;      ///< of the defect, which is a square
    int expected;   ///< a PixelFault that has to be found where the defect is found at all; 0 is any
    double atLeast; ///< part of them that is found
    Spoil spoil;
};

void add(std::vector<double>& values, double offset)
{
    for (double& value : values)
        value += offset;
}

const Spoil dead = [](auto& values, double size, Random&) {
    values.assign(values.size(), size > 0 ? 16383 : 0);
};
const Spoil offset = [](auto& values, double size, Random&) { add(values, size); };

const std::vector<Kind> kinds = {
    {"dead", 1, Dead, 0.99, dead},
    {"dead2x2", 2, Dead, 0.99, dead},
    {"dead3x3", 3, Dead, 0.99, dead},
    {"stuck", 1, Stuck, 0.99,
     [](auto& values, double, Random& random) {
         values.assign(values.size(), values[random.below(int(values.size()))]);
     }},
    {"hot", 1, Hot, 0.88, [](auto& values, double size, Random&) { add(values, std::abs(size)); }},
    {"cold", 1, Cold, 0.88, [](auto& values, double size, Random&) { add(values, -std::abs(size)); }},
    {"cluster2x2", 2, 0, 0.93, offset},
    {"cluster3x3", 3, 0, 0.93, offset},
    {"noisy", 1, 0, 0.80,
     [](auto& values, double size, Random& random) {
         for (double& value : values)
             value += size * random.normal();
     }},
    {"twinkling", 1, 0, 0.85,
     [](auto& values, double size, Random& random) {
         const double often = random(0.1, 0.5);
         bool on = random.coin();
         for (double& value : values) {
             on = on != (random(0, 1) < often);
             value += on ? size : 0;
         }
     }},
    {"weak", 1, Weak, 0.90,
     [](auto& values, double, Random& random) {
         const double mean = cv::mean(values)[0], part = random(0, 0.4);
         for (double& value : values)
             value = mean + part * (value - mean);
     }},
};

/// Spoils places that do not touch each other; 1 where a pixel is defective.
/// @param least  deviations of what is around a place
cv::Mat_<unsigned char> plant(Frames& frames, const Kind& kind, unsigned seed, int places = 60,
                              double least = 12)
{
    const Frames before = frames;
    Random random(seed);
    const cv::Rect whole({}, frames[0].size());
    cv::Mat_<unsigned char> truth(whole.size(), 0);
    for (int planted = 0; planted < places;) {
        const int left = random.below(whole.width - kind.width + 1),
                  top = random.below(whole.height - kind.width + 1);
        const cv::Rect place(left, top, kind.width, kind.width);
        const cv::Rect around = cv::Rect(place.x - 1, place.y - 1, kind.width + 2, kind.width + 2) & whole;
        const bool still =
            kind.expected == Weak && spreadInTime(before, place.tl()) < 16; // eight times the noise
        if (cv::countNonZero(truth(around)) > 0 || still)
            continue;
        ++planted;
        const double sign = random.coin() ? 1 : -1;
        const double size = sign * random(least, 30) *
                            deviationAt(before, place.tl() + cv::Point(place.width / 2, place.width / 2));
        for (int y = place.y; y < place.br().y; ++y)
            for (int x = place.x; x < place.br().x; ++x) {
                std::vector<double> values;
                for (const Frame& frame : frames)
                    values.push_back(frame(y, x));
                kind.spoil(values, size, random);
                for (std::size_t n = 0; n < frames.size(); ++n)
                    frames[n](y, x) = clip(values[n]);
                truth(y, x) = 1;
            }
    }
    return truth;
}

PixelFindings search(const Frames& frames)
{
    PixelSearch search;
    for (const Frame& frame : frames)
        search.add(frame);
    return search.find();
}

class PixelSearchFor : public testing::TestWithParam<Kind>
{};

TEST_P(PixelSearchFor, FindsWhatWasPlantedAndNothingElse)
{
    int found = 0, named = 0, planted = 0, others = 0;
    for (const unsigned seed : {1U, 2U}) {
        Frames frames = scene(seed);
        const auto truth = plant(frames, GetParam(), 7 * seed);
        const PixelFindings findings = search(frames);
        planted += cv::countNonZero(truth);
        found += cv::countNonZero((findings.faults != 0) & (truth != 0));
        named += cv::countNonZero(PixelMap(findings.faults & GetParam().expected) != 0);
        others += cv::countNonZero((findings.faults != 0) & (truth == 0));
    }
    EXPECT_GE(found, GetParam().atLeast * planted) << planted;
    EXPECT_GE(named, GetParam().expected == 0 ? 0 : GetParam().atLeast * found);
    EXPECT_LE(others, 4); // of 2 x 12288 pixels
}

INSTANTIATE_TEST_SUITE_P(Kinds, PixelSearchFor, testing::ValuesIn(kinds),
                         [](const auto& kind) { return kind.param.name; });

TEST(OddSpots, AreNotTheBrightPlacesOfALine)
{
    const auto found = [](float line, cv::Point step) {
        cv::Mat_<float> plane(41, 41, 0.0F);
        for (int k = -20; k <= 20; ++k)
            plane(20 + k * step.y, 20 + k * step.x) = line;
        plane(20, 20) = 70;
        cv::Mat_<unsigned char> bad(plane.size(), static_cast<unsigned char>(0));
        int pixels = 0;
        OddSpots(plane, bad, {7, 1, 0.3F, 1, 1}).find([&](cv::Point, float) { ++pixels; });
        return pixels;
    };
    for (const cv::Point& step : {cv::Point(1, 0), {0, 1}, {1, 1}, {-1, 1}}) {
        EXPECT_EQ(found(0, step), 1);
        EXPECT_EQ(found(30, step), 0) << step;
    }
}

TEST(PixelSearch, FindsNothingInScenesWithoutDefects)
{
    for (unsigned seed = 1; seed <= 2; ++seed)
        for (const int count : {1, 2, 4, 7, 40})
            EXPECT_EQ(search(scene(seed, count)).count(), 0U) << seed << ", " << count << " frames";
}

TEST(PixelSearch, LearnsNothingFromARepeatedFrame)
{
    Frames frames = scene(3), repeated;
    plant(frames, kinds[3], 5);
    for (const Frame& frame : frames)
        repeated.insert(repeated.end(), {frame, frame});
    EXPECT_EQ(search(repeated).list(), search(frames).list());
}

TEST(PixelSearch, FindsWeakPixelsWhereLittleMovesAndPixelsAreRestless)
{
    Random random(4);
    Frames frames;
    for (int n = 0; n < 80; ++n)
        frames.push_back(matrixOf<unsigned short>(
            {64, 48}, [&](int, int) { return clip(7000 + 23 * std::sin(0.17 * n) + 5 * random.normal()); }));
    EXPECT_EQ(search(frames).count(), 0U);
    const cv::Mat_<unsigned char> truth = plant(frames, kinds.back(), 1);
    const PixelMap faults = search(frames).faults;
    EXPECT_GE(cv::countNonZero((faults == Weak) & (truth != 0)), 54); // of 60
    EXPECT_EQ(cv::countNonZero((faults != 0) & (truth == 0)), 0);
}

TEST(PixelSearch, FindsRowsAndColumnsThatAreOffAsAWhole)
{
    for (const auto [count, row, column] : {std::array{1, 20, 60}, {20, 20, 60}, {1, 95, 0}, {20, 0, 127}}) {
        Frames frames = scene(5, count);
        for (Frame& frame : frames) {
            frame.row(row) += 25;
            frame.col(column) -= 25;
            frame.row(row < 20 ? 95 : 0) += count == 1 ? 4 : 80; // as many cameras have it; a thing beyond it
            frame.row(row < 20 ? 94 : 1) += count == 1 ? 0 : 20; // which the lens blurs
        }
        const PixelFindings findings = search(frames);
        EXPECT_EQ(findings.count(), 96U + 128 - 1) << row;
        EXPECT_EQ(cv::countNonZero(findings.faults.row(row) & BadRow), 128);
        EXPECT_EQ(cv::countNonZero(findings.faults.col(column) & BadColumn), 96);
        EXPECT_EQ(cv::countNonZero(findings.clusters.row(row) == 223), 128);
    }
}

TEST(PixelSearch, TakesABlindColumnForDeadButNotALampThatSaturates)
{
    Frames frames = scene(6, 3);
    for (Frame& frame : frames) {
        frame.col(127).setTo(0);
        cv::Mat_<float> lamp(frame.size(), 0.0F);
        cv::circle(lamp, {40, 40}, 4, 30000, cv::FILLED);
        cv::GaussianBlur(lamp, lamp, {}, 1.1);
        frame = matrixOf<unsigned short>(frame.size(),
                                         [&](int y, int x) { return clip(frame(y, x) + lamp(y, x)); });
    }
    const PixelFindings findings = search(frames);
    EXPECT_EQ(cv::countNonZero(findings.faults.col(127) == Dead), 96);
    EXPECT_EQ(findings.count(), 96U);
}

/// A small recording with much that is just so or just not so: few frames and pixels, lamps with rims and
/// without, lines that are off in part, faint defects.
Frames motley(unsigned seed)
{
    Random random(seed);
    const cv::Size size{7 + random.below(50), 7 + random.below(40)};
    const int count =
        std::array{1, 2, 3, 4, 5, 9, 14, 15, 16, 36}[static_cast<std::size_t>(random.below(10))];
    const int side = 20 + random.below(60), contrast = random.below(5), noise = random.below(9),
              right = random.below(40), down = random.below(40), level = 200 + 1600 * random.below(10),
              sway = random.coin() ? random.below(60) : 0;
    Frames frames;
    for (int n = 0; n < count; ++n)
        frames.push_back(matrixOf<unsigned short>(size, [&](int y, int x) {
            const int u = 4096 + 16 * x + right * (n % 9), v = 4096 + 16 * y + down * (n % 7);
            return level + textureAt(u, v, side) * contrast + noiseOf(n, y, x) * noise / 74 +
                   noiseOf(0, 0, x) / 37 + sway * (n % 6);
        }));
    for (int lamps = random.below(3); lamps > 0; --lamps) {
        const cv::Point at{random.below(size.width), random.below(size.height)};
        const int radius = random.below(4), rim = random.below(6), top = random.coin() ? 16383 : 0;
        for (Frame& frame : frames)
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    if (const int far = std::max(std::abs(x - at.x), std::abs(y - at.y)); far <= radius)
                        frame(y, x) = static_cast<unsigned short>(top);
                    else if (far == radius + 1)
                        frame(y, x) =
                            static_cast<unsigned short>(frame(y, x) + (top - frame(y, x)) * rim / 20);
    }
    for (Kind kind : kinds) {
        kind.expected = 0;
        const int places = random.below(4);
        plant(frames, kind, seed, places, random(1, 12));
    }
    for (int lines = random.below(4); lines > 0; --lines) {
        const cv::Rect all({}, size);
        const cv::Rect line = random.coin()
                                  ? cv::Rect{random.below(size.width), random.below(6), 1, size.height}
                                  : cv::Rect{random.below(6), random.below(size.height), size.width, 1};
        const int off = random.below(100) - 50;
        for (Frame& frame : frames)
            frame(line & all) += off;
    }
    return frames;
}

TEST(PixelSearch, SaysTheSameWhateverCompilesAndRunsIt)
{
    unsigned hash = 0;
    for (unsigned seed = 0; seed < 300; ++seed)
        hash = hashOf(search(motley(seed)).list(), hash);
    EXPECT_EQ(hash, 1232557743U);
}

TEST(PixelSearch, TakesTheShutterOff)
{
    Random random(9);
    Frames frames = scene(7, 1);
    const Frame shutter =
        matrixOf<unsigned short>(frames[0].size(), [&](int, int) { return 4000 + random.below(3000); });
    frames[0] += shutter - 3000;
    frames[0](30, 30) += 400;
    PixelSearch search(shutter);
    search.add(frames[0]);
    EXPECT_EQ(search.find().count(), 1U);
    EXPECT_EQ(search.find().faults(30, 30), Hot);
}

TEST(PixelSearch, SaysWhyInFlagsAndWords)
{
    PixelFindings findings;
    findings.faults = (PixelMap(2, 3) << 0, Dead, Hot | Twinkling, Weak, BadRow | BadColumn, 0);
    findings.deviations = cv::Mat_<float>(2, 3, -12.34F);
    findings.clusters = PixelMap(2, 3, 4);
    EXPECT_TRUE(same(findings.map(), PixelMap((PixelMap(2, 3) << 0, 64, 66, 32, 16, 0))));
    EXPECT_EQ(findings.list(),
              "x,y,flags,reasons,deviations,cluster\n1,0,64,dead,-12.3,4\n"
              "2,0,66,hot+twinkling,-12.3,4\n0,1,32,weak,-12.3,4\n1,1,16,row+column,-12.3,4\n");
    EXPECT_EQ(findings.overshot(), "dead"); // the first of those that are as many
    findings.faults = PixelMap(1, 100, 0);
    findings.faults.colRange(0, 5) = int(Noisy);
    EXPECT_EQ(findings.overshot(), "");
    findings.faults(0, 5) = Noisy;
    EXPECT_EQ(findings.overshot(), "noisy");
    EXPECT_THROW(PixelSearch().find(), velmo::exp::Exception);
}

} // namespace

#include "camera/Camera.h"

#include "camera/settings/Keys.h"
#include "camera/settings/Parse.h"
#include "tests/camera/Support.h"

/// A wall, and a warm square that moves.
const auto frameAt = [](int time) {
    Frame frame(40, 60, static_cast<unsigned short>(1000));
    frame(cv::Rect(10 + time, 10, 8, 8)) = 2000;
    return frame;
};

TEST(Camera, ShowsWhatItCleansAndPaints)
{
    const Settings settings = settingsWith({{"noise/denoise", "normal"},
                                            {"colours/palette", "Hotcold"},
                                            {"colours/range", "1000:1900"},
                                            {"picture/scale", "2"},
                                            {"picture/legend", "true"}});
    Camera one(settings), other(settings);
    for (int time = 0; time < 4; ++time) {
        const Frame raw = frameAt(time), before = raw.clone();
        const Picture shown = one.show(raw).clone();
        EXPECT_TRUE(same(shown, other.paint(other.clean(raw))) &&
                    same(raw, before)); // its input is as it was
        EXPECT_TRUE(shown.rows == 80 && shown.cols > 120) << shown.size();
        EXPECT_EQ(shown(0, 0), cv::Vec3b(255, 0, 0));
        EXPECT_EQ(shown(2 * 14, 2 * (14 + time)), cv::Vec3b(0, 0, 255));
    }
    EXPECT_EQ(one.chain().size(), 1U);
}

TEST(Camera, MeasuresFramesAndFollowsBlobs)
{
    Camera camera(settingsWith({{"blobs/above", "1500"}, {"colours/palette", "Grayscale"}}));
    for (int time = 0; time < 3; ++time) {
        const auto& found = camera.measure(camera.clean(frameAt(time)));
        EXPECT_TRUE(found.low == 1000 && found.high == 2000);
        EXPECT_DOUBLE_EQ(found.mean, 1000 + 1000 * 64 / 2400.0);
        ASSERT_EQ(found.blobs.size(), 1U);
        EXPECT_EQ(found.blobs[0].component.getLabel(), 1U);
    }
    const Picture marked = camera.show(frameAt(3));
    EXPECT_NE(marked(10, 13)[0], marked(10, 13)[1]); // not grey: marked
}

TEST(Camera, RefusesSettingsThatContradictEachOther)
{
    const std::vector<std::pair<const char*, const char*>> wrong[] = {
        {{"colours/humidity", "20:50"}, {"colours/insulation", "20:0"}},
        {{"blobs/above", "1"}, {"blobs/below", "2"}},
        {{"blobs/above", "65536"}},
        {{"blobs/below", "-300"}, {"temperature/unit", "centikelvin"}},
        {{"colours/palette", "Pink"}}};
    for (const auto& each : wrong)
        EXPECT_THROW(Camera(settingsWith(each)), Exception) << each[0].second;
    Camera small(settingsWith({{"frame/downsize", "160x120"}}));
    EXPECT_THROW(small.show(frameAt(0)), Exception);
}

/// The kinds of settings that belong together; one of each kind is chosen.
const std::vector<const char*> choices[] = {
    {"", "unit=centikelvin", "unit=centikelvin degrees=K", "unit=centikelvin degrees=F", "unit=kelvin/64",
     "unit=linear:0.01:-273.15", "unit=planck:44910,1501,1,-7340,0.0126"},
    {"", "", "", "emissivity=0.7", "emissivity=0.95 reflected=30", "transmission=0.8 air=15:60", "band=total",
     "distance=30 air=15:60", "distance=800 air=10:20 emissivity=0.9", "window=0.85:22 emissivity=0.6"},
    {"", "", "denoise=light", "denoise=normal", "denoise=strong", "pattern=30:5:4", "temporal=4:1900",
     "temporal=12:900 spatial=5", "spatial=20"},
    {"", "", "", "", "downsize=160x120", "downsize=120x90"},
    {"", "palette=Grayscale", "palette=Hotcold", "palette=Rainbow", "palette=Bluered"},
    {"", "range=lock", "range=20:25", "range=29300n:29700n", "range=29480n:29490n", "range=p2:p97"},
    {"", "", "tone=plateau", "tone=local", "detail=3", "tone=local detail=9.5", "humidity=20:50",
     "humidity=23:40 mould=true", "insulation=22:-5"},
    {"", "", "", "regions=29400n:29500n:102030,29450n:29460n:FFFFFF", "regions=21:22:00FF40"},
    {"", "", "", "isotherms=above:22:FF0000",
     "isotherms=below:29450n:0000FF:blend,between:29500n:29600n:00FF00:blend"},
    {"", "", "scale=2", "scale=3"},
    {"", "legend=true"},
    {"", "", "above=21.7", "above=29550n", "below=29400n min-size=9"},
};

/// A camera of the settings, or why it is refused; what it says and shows.
unsigned hashOfCamera(unsigned seed)
{
    Random random(seed);
    Settings settings;
    bool half = false;
    std::string said;
    unsigned hash = seed;
    try {
        for (const auto& kind : choices) {
            std::istringstream chosen(
                kind[static_cast<std::size_t>(random(0, static_cast<int>(kind.size()) - 1))]);
            for (std::string name, value; std::getline(chosen >> std::ws, name, '=') && chosen >> value;) {
                const auto key = std::find_if(keys().begin(), keys().end(), [&](const Key& known) {
                    return known.path.substr(known.path.find('/') + 1) == name;
                });
                settings.set(key->path, value);
                half = half || name == "downsize";
            }
        }
        const cv::Size size = half ? cv::Size{240, 180} : cv::Size{random(1, 70), random(1, 50)};
        const int contrast = random(0, 6), noise = random(0, 20), step = random(0, 30);
        Camera camera(settings);
        for (int n = 0; n < (half ? 2 : 12); ++n) {
            const Frame& clean = camera.clean(matrixOf<unsigned short>(size, [&](int y, int x) {
                return 29480 + contrast * textureAt(4096 + 16 * x + n * step, 4096 + 16 * y, 70) +
                       noise * noiseOf(x, y, n) / 37;
            }));
            const Measurement& found = camera.measure(clean);
            for (const double figure : {0.0 + found.low, 0.0 + found.high, found.mean})
                said += numberText(figure, 3) + ' ';
            for (const Blob& blob : found.blobs)
                for (const double figure : {blob.centre.x, blob.centre.y, blob.elongation, blob.length,
                                            blob.width, blob.angle, blob.mean})
                    said += numberText(figure, 3) + ' ';
            hash = hashOf(cv::Mat_<unsigned char>(camera.paint(clean).clone().reshape(1)), hash);
        }
    } catch (const Exception& error) {
        said += error.what();
    }
    return hashOf(said, hash);
}

TEST(Camera, ShowsTheSameWhateverCompilesAndRunsIt)
{
    unsigned hash = 0;
    for (unsigned seed = 0; seed < 240; ++seed)
        hash = hash * 31 + hashOfCamera(seed);
    EXPECT_EQ(hash, 3943803672U);
}

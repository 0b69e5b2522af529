#include "recordings/Films.h"

#include "recordings/Frames.h"
#include "recordings/PngFile.h"
#include "tests/Support.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

using namespace velmo::recordings;
using namespace std::string_literals;

using Container = FilmFormat::Container;

/// Smooth colours that go through a picture, so that a codec keeps them.
const auto pictures = [](cv::Size size) {
    std::vector<Picture> all;
    for (int i = 0; i < 7; ++i) {
        Picture& picture = all.emplace_back(size);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                picture(y, x) = cv::Vec3i(30 * i, 3 * x, 255 - 5 * y);
    }
    return all;
};

struct FilmFiles : FilesTest
{
    /// What a shell command prints, errors too.
    std::string said(const std::string& command) const
    {
        EXPECT_NE(std::system((command + " >" + path("said") + " 2>&1").c_str()), -1);
        return bytes("said");
    }

    template <class Images>
    void film(const std::string& name, const FilmFormat& format, const Images& images) const
    {
        const auto writer = films().create({path(name), name}, format);
        for (const cv::Mat& image : images)
            writer->write(image);
        writer->finish();
    }

    /// The pictures of a film as another program sees them.
    std::vector<Picture> decoded(const std::string& name, cv::Size size) const
    {
        const std::string raw = said("ffmpeg -v error -i " + path(name) + " -f rawvideo -pix_fmt bgr24 -");
        const std::size_t each = 3 * static_cast<std::size_t>(size.area());
        EXPECT_EQ(raw.size() % each, 0U) << name;
        std::vector<Picture> all;
        for (std::size_t place = 0; place + each <= raw.size(); place += each)
            std::copy_n(&raw[place], each, reinterpret_cast<char*>(all.emplace_back(size).data));
        return all;
    }
};

TEST_F(FilmFiles, HoldThePicturesAtTheRateThatWasAskedFor)
{
    const std::tuple<const char*, Container, double, const char*, cv::Size, double> cases[] = {
        {"a.avi", Container::Avi, 1.5, "3/2", {33, 17}, 6},
        {"b.avi", Container::Avi, 0.1, "1/10", {33, 17}, 6},
        {"a.mkv", Container::Mkv, 1.5, "3/2", {33, 17}, 0},
        {"b.mkv", Container::Mkv, 0.1, "1/10", {33, 17}, 0},
        {"a.mp4", Container::Mp4, 1.5, "3/2", {34, 18}, 6},
        {"b.mp4", Container::Mp4, 0.1, "1/10", {34, 18}, 6},
        {"c.mp4", Container::Mp4, 29.97, "2997/100", {34, 18}, 6},
    };
    const std::string probe = "ffprobe -v error -count_frames -of csv=p=0 -show_entries "
                              "stream=width,height,avg_frame_rate,nb_read_frames ";
    const std::vector<Picture> expected = pictures({33, 17});
    for (const auto& [name, container, fps, rate, size, largestError] : cases) {
        film(name, {container, fps, ""}, expected);
        EXPECT_EQ(said(probe + path(name)),
                  std::to_string(size.width) + "," + std::to_string(size.height) + "," + rate + ",7\n");
        const std::vector<Picture> found = decoded(name, size);
        ASSERT_EQ(found.size(), expected.size()) << name;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const double sum = cv::norm(found[i](cv::Rect(0, 0, 33, 17)), expected[i], cv::NORM_L1);
            EXPECT_LE(sum / (33 * 17 * 3), largestError) << name << ", picture " << i;
        }
    }
}

/// Frames as bytes, low byte first, as the reader finds them.
std::string valuesIn(const std::string& path, std::string* unit = nullptr)
{
    const auto source = openFrames({path}, {});
    std::string bytes;
    for (Frame frame; source->next(frame);)
        bytes.append(reinterpret_cast<const char*>(frame.data), 2 * frame.total());
    if (unit != nullptr)
        *unit = source->unit();
    return bytes;
}

TEST_F(FilmFiles, OfCountsGiveEveryBitBackWhoeverWroteThem)
{
    cv::Mat frames(3 * 21, 30, CV_16U);
    cv::randu(frames, 0, 65536);
    const std::string values(reinterpret_cast<const char*>(frames.data), 2 * frames.total());

    const std::vector<cv::Mat> all{frames.rowRange(0, 21), frames.rowRange(21, 42), frames.rowRange(42, 63)};
    film("ours.mkv", {Container::Mkv, 9, "kelvin/16"}, all);
    std::string unit;
    EXPECT_TRUE(valuesIn(path("ours.mkv"), &unit) == values);
    EXPECT_EQ(unit, "kelvin/16");

    put("raw", values);
    const std::string from = "ffmpeg -v error -y -f rawvideo -s 30x21 -pix_fmt ";
    for (const char* const to : {"-c:v ffv1 -f matroska", "-c:v ffv1 -f avi", "-c:v rawvideo -f nut",
                                 "-c:v rawvideo -pix_fmt gray16be -f nut"}) {
        ASSERT_EQ(said(from + "gray16le -i " + path("raw") + " " + to + " " + path("a.film")), "");
        EXPECT_TRUE(valuesIn(path("a.film")) == values) << to;
    }
    ASSERT_EQ(said(from + "gray -i " + path("raw") + " -c:v ffv1 -f avi " + path("a.film")), "");
    const std::string wide = valuesIn(path("a.film"));
    ASSERT_EQ(wide.size(), 2 * values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        ASSERT_TRUE(wide[2 * i] == values[i] && wide[2 * i + 1] == 0) << i;
}

const std::string ffv1 =
    "ffmpeg -v error -f lavfi -i mandelbrot=s=512x512 -frames:v 1 -pix_fmt gray -c:v ffv1 ";

TEST_F(FilmFiles, ThatAreNoRecordingsAreRefusedInOneLine)
{
    film("colour.mp4", {Container::Mp4, 9, ""}, pictures({16, 16}));
    film("colour.mkv", {Container::Mkv, 9, ""}, pictures({16, 16}));
    film("jpeg.avi", {Container::Avi, 9, ""}, pictures({16, 16}));
    film("words.mkv", {Container::Mkv, 9, std::string(100000, 'u')}, pictures({16, 16}));
    EXPECT_EQ(said(ffv1 + path("cut.avi")), "");
    std::filesystem::resize_file(path("cut.avi"), 15000);
    put("list.nut", "nut/multimedia container");
    for (const auto& [name, why] : {std::pair("colour.mp4", "a film in Matroska"),
                                    {"colour.mkv", "bgr0"},
                                    {"jpeg.avi", "mjpeg"},
                                    {"words.mkv", "40960 bytes beside its pictures"},
                                    {"cut.avi", ": cut off"},
                                    {"list.nut", "list.nut"}})
        EXPECT_THAT(refusal([&](const char* film) { valuesIn(path(film)); }, name).message,
                    testing::AllOf(HasSubstr(name), HasSubstr(why), testing::Not(HasSubstr("\n"))));
    const auto counts = films().create({path("counts.avi"), "counts.avi"}, {});
    EXPECT_THROW(counts->write(Frame(4, 4, 7)), Exception); // would lose bits
}

/// A JPEG that says how the camera was held.
const auto writeJpeg = [](const std::string& path, const cv::Mat& picture, int orientation) {
    std::vector<unsigned char> bytes;
    cv::imencode(".jpg", picture, bytes, {cv::IMWRITE_JPEG_QUALITY, 100});
    const std::string exif = "\xff\xe1\0\"Exif\0\0MM\0*\0\0\0\x8\0\1\1\x12\0\3\0\0\0\1\0"s +
                             static_cast<char>(orientation) + std::string(6, '\0');
    bytes.insert(bytes.begin() + 2, exif.begin(), exif.end());
    std::ofstream(path, std::ios::binary) << std::string(bytes.begin(), bytes.end());
};

/// The most memory, in KiB, that this process has had since the call before.
int peakOfMemory()
{
    const std::string status = contentOf("/proc/self/status");
    std::ofstream("/proc/self/clear_refs") << 5;
    return std::stoi(status.substr(status.find("VmHWM:") + 6));
}

TEST_F(FilmFiles, TakeLittleMemoryWhateverTheirHeadersSay)
{
    const std::string zeros(100000, '\0');
    film("list.avi", {Container::Avi, 9, ""}, pictures({16, 16}));
    std::string list = bytes("list.avi");
    list.insert(list.find("movi") - 8, "LIST\4\0\0\x10INFOIART\0\0\0\x10"s + zeros);
    const std::string matroska =
        "\x1a\x45\xdf\xa3\x8b\x42\x82\x88matroska\x18\x53\x80\x67\x01\xff\xff\xff\xff\xff\xff\xff"s;
    const std::string attached = matroska + "\x19\x41\xa4\x69\x01\0\0\0\x10\0\0\x0b"s +
                                 "\x61\xa7\x01\0\0\0\x10\0\0\0\x46\x5c\x01\0\0\0\x0f\0\0\0"s;
    EXPECT_EQ(said(ffv1 + "-level 3 -slices 900 " + path("slices.mkv")), "");
    for (const auto& [name, content, why] : {std::tuple("list.avi", list, "beside its pictures"),
                                             {"attached.mkv", attached, "beside its pictures"},
                                             {"slices.mkv", bytes("slices.mkv"), "more than 8 x 8 slices"}}) {
        std::filesystem::resize_file(put(name, content), 250 << 20);
        peakOfMemory();
        const int before = peakOfMemory();
        EXPECT_THAT(refusal([&](const char* film) { valuesIn(path(film)); }, name).message, HasSubstr(why));
        EXPECT_LT(peakOfMemory(), before + (32 << 10)) << name;
    }
}

TEST_F(FilmFiles, PicturesOfEveryFormatAreThoseThatOthersSee)
{
    Picture picture = pictures({48, 40})[3];
    cv::GaussianBlur(picture, picture, {9, 9}, 0);
    cv::Mat deep, clear;
    picture.convertTo(deep, CV_16U, 257);
    cv::cvtColor(picture, clear, cv::COLOR_BGR2BGRA);
    std::vector<std::string> names = {put("text.ppm", "P3 2 1 255 1 2 3 4 5 6\n")};
    for (const auto& [name, image] : {std::pair("a.png", cv::Mat(picture)),
                                      {"a.bmp", picture},
                                      {"a.ppm", picture},
                                      {"deep.png", deep},
                                      {"deep.ppm", deep},
                                      {"clear.png", clear},
                                      {"grey.png", clear.reshape(1)},
                                      {"grey.jpg", picture.reshape(1)},
                                      {"grey.pgm", clear.reshape(1)}}) {
        names.push_back(path(name));
        cv::imwrite(names.back(), image);
    }
    for (int orientation = 1; orientation <= 8; ++orientation) {
        names.push_back(path("turned" + std::to_string(orientation) + ".jpg"));
        writeJpeg(names.back(), picture, orientation);
    }
    for (const std::string& name : names) {
        const Picture found = readPicture(name);
        const Picture expected = cv::imread(name, cv::IMREAD_COLOR);
        ASSERT_EQ(found.size(), expected.size()) << name;
        const int rounding = testing::Matches(testing::EndsWith(".jpg"))(name) ? 4 : name == path("deep.ppm");
        EXPECT_LE(cv::norm(found, expected, cv::NORM_INF), rounding) << name;
    }
    EXPECT_THROW(readPicture(put("a.txt", "no picture")), Exception);
}

} // namespace

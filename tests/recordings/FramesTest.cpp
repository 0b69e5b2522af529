#include "recordings/FileList.h"

#include "recordings/Frames.h"
#include "tests/Support.h"

#include <opencv2/imgcodecs.hpp>

namespace {

using namespace velmo::camera;

TEST(FileList, NumbersCountAsNumbers)
{
    std::vector<std::string> names = {"f_10.pgm",  "f_9.pgm", "f_2b.pgm", "f_2.pgm",
                                      "f_002.pgm", "e",       "f_",       "f_10"};
    std::sort(names.begin(), names.end(), velmo::recordings::naturallyBefore);
    EXPECT_THAT(names,
                ElementsAre("e", "f_", "f_002.pgm", "f_2.pgm", "f_2b.pgm", "f_9.pgm", "f_10", "f_10.pgm"));
}

velmo::recordings::ReadOptions raw(int width, int height)
{
    velmo::recordings::ReadOptions options;
    options.raw = {cv::Size(width, height), false};
    return options;
}

class Frames : public FilesTest
{
protected:
    std::vector<Frame> read(const std::vector<std::string>& names,
                            const velmo::recordings::ReadOptions& options = {})
    {
        std::vector<std::string> inputs;
        for (const std::string& name : names)
            inputs.push_back(path(name));
        const auto source = velmo::recordings::openFrames(inputs, options);
        std::vector<Frame> frames;
        for (Frame frame; source->next(frame);)
            frames.push_back(frame);
        EXPECT_EQ(source->count(), frames.size());
        return frames;
    }
};

TEST_F(Frames, ComeFromFoldersPatternsAndFiles)
{
    for (const char* number : {"2", "10", "1"})
        put(std::string("f") + number + ".pgm", std::string("P5 1 1 65535\n\x01") + number[0]);
    put("notes.txt", "not a frame");
    const auto firstPixels = [&](const std::vector<std::string>& names) {
        std::string found;
        for (const Frame& frame : read(names))
            found += static_cast<char>(frame(0, 0) - 256);
        return found;
    };
    EXPECT_EQ(firstPixels({""}), "121");
    EXPECT_EQ(firstPixels({"f?.pgm"}), "12");
    EXPECT_EQ(firstPixels({"f2.pgm", "f1.pgm"}), "21"); // as typed
}

TEST_F(Frames, OfEveryFormatHoldTheValuesOfTheFile)
{
    const Frame frame = (Frame(2, 2) << 0, 255, 256, 65535);
    for (const char* name : {"a.png", "a.tif", "a.pgm"}) {
        cv::imwrite(path(name), frame);
        EXPECT_TRUE(same(read({name}).at(0), frame)) << name;
    }
}

TEST_F(Frames, OfARawFileAreLittleEndianAndOneBehindTheOther)
{
    put("a.raw", std::string("\x01\x02\xFF\x00\x00\x80\xFF\xFF", 8));
    const std::vector<Frame> frames = read({"a.raw", "a.raw"}, raw(2, 1));
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_TRUE(same(frames[0], (Frame(1, 2) << 0x0201, 0x00FF)));
    EXPECT_TRUE(same(frames[3], (Frame(1, 2) << 0x8000, 0xFFFF)));
}

TEST_F(Frames, ThatCannotBeReadAreNamed)
{
    put("half.pgm", "P5 4 4 65535\nabc");
    put("empty.raw", "");
    cv::imwrite(path("colour.png"), cv::Mat(2, 2, CV_16UC3, cv::Scalar::all(1)));
    for (const char* name : {"half.pgm", "colour.png", "missing.pgm", "missing*.pgm"})
        EXPECT_THAT(refusal([&] { read({name}); }).message, HasSubstr(name));
    EXPECT_THROW(read({"empty.raw"}, raw(4, 4)), Exception);
}

} // namespace

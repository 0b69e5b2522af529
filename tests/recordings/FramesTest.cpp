#include "tests/TemporaryFolder.h"

#include "recordings/FileList.h"
#include "recordings/Frames.h"

#include "core/Exception.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::ElementsAre;
using velmo::camera::Frame;
using velmo::exp::Exception;

Frame pixels(int left, int right)
{
    return (Frame(1, 2) << static_cast<unsigned short>(left), static_cast<unsigned short>(right));
}

TEST(FileList, NumbersCountAsNumbers)
{
    std::vector<std::string> names = {"f_10.pgm",  "f_9.pgm", "f_2b.pgm", "f_2.pgm",
                                      "f_002.pgm", "e",       "f_",       "f_10"};
    std::sort(names.begin(), names.end(), velmo::recordings::naturallyBefore);
    EXPECT_THAT(names,
                ElementsAre("e", "f_", "f_002.pgm", "f_2.pgm", "f_2b.pgm", "f_9.pgm", "f_10", "f_10.pgm"));
}

velmo::recordings::ReadOptions raw(int width, int height, bool bigEndian = false)
{
    velmo::recordings::ReadOptions options;
    options.raw = {cv::Size(width, height), bigEndian};
    return options;
}

class Frames : public testing::Test
{
protected:
    void write(const std::string& name, const std::string& bytes)
    {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
    }

    std::vector<Frame> read(const std::vector<std::string>& names,
                            const velmo::recordings::ReadOptions& options = {})
    {
        std::vector<std::string> inputs;
        for (const std::string& name : names)
            inputs.push_back(folder.path() / name);
        const auto source = velmo::recordings::openFrames(inputs, options);
        std::vector<Frame> frames;
        for (Frame frame; source->next(frame);)
            frames.push_back(frame);
        EXPECT_EQ(source->count(), frames.size());
        return frames;
    }

    TemporaryFolder folder;
};

TEST_F(Frames, ComeFromFoldersPatternsAndFiles)
{
    for (const char* number : {"2", "10", "1"})
        write(std::string("f") + number + ".pgm", std::string("P5 1 1 65535\n\x01") + number[0]);
    write("notes.txt", "not a frame");
    const auto firstPixels = [](const std::vector<Frame>& frames) {
        std::vector<int> found;
        std::transform(frames.begin(), frames.end(), std::back_inserter(found),
                       [](const Frame& frame) { return frame(0, 0) - 256; });
        return found;
    };
    EXPECT_THAT(firstPixels(read({""})), ElementsAre('1', '2', '1'));
    EXPECT_THAT(firstPixels(read({"f?.pgm"})), ElementsAre('1', '2'));
    EXPECT_THAT(firstPixels(read({"f2.pgm", "f1.pgm"})), ElementsAre('2', '1')); // as typed
}

TEST_F(Frames, OfEveryFormatHoldTheValuesOfTheFile)
{
    const Frame frame = (Frame(2, 2) << 0, 255, 256, 65535);
    for (const char* name : {"a.png", "a.tif", "a.pgm"}) {
        cv::imwrite(folder.path() / name, frame);
        EXPECT_EQ(cv::norm(read({name}).at(0), frame, cv::NORM_INF), 0) << name;
    }
}

TEST_F(Frames, OfARawFileAreLittleEndianAndOneBehindTheOther)
{
    write("a.raw", std::string("\x01\x02\xFF\x00\x00\x80\xFF\xFF", 8));
    const std::vector<Frame> frames = read({"a.raw", "a.raw"}, raw(2, 1));
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_EQ(cv::norm(frames[0], pixels(0x0201, 0x00FF), cv::NORM_INF), 0);
    EXPECT_EQ(cv::norm(frames[3], pixels(0x8000, 0xFFFF), cv::NORM_INF), 0);
}

TEST_F(Frames, ThatCannotBeReadAreNamed)
{
    write("half.pgm", "P5 4 4 65535\nabc");
    write("empty.raw", "");
    cv::imwrite(folder.path() / "colour.png", cv::Mat(2, 2, CV_16UC3, cv::Scalar::all(1)));
    for (const char* name : {"half.pgm", "colour.png", "missing.pgm", "missing*.pgm"})
        try {
            read({name});
            ADD_FAILURE() << name << " was read";
        } catch (const Exception& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(name));
        }
    EXPECT_THROW(read({"empty.raw"}, raw(4, 4)), Exception);
}

} // namespace

#include "recordings/FileList.h"

#include "recordings/Frames.h"
#include "tests/Support.h"

TEST(FileList, NumbersCountAsNumbers)
{
    std::vector<std::string> names = {"f_10.pgm",  "f_9.pgm", "f_2b.pgm", "f_2.pgm",
                                      "f_002.pgm", "e",       "f_",       "f_10"};
    std::sort(names.begin(), names.end(), velmo::recordings::naturallyBefore);
    EXPECT_THAT(names,
                ElementsAre("e", "f_", "f_002.pgm", "f_2.pgm", "f_2b.pgm", "f_9.pgm", "f_10", "f_10.pgm"));
}

using Frames = FilesTest;

TEST_F(Frames, ComeFromFoldersPatternsAndFiles)
{
    for (const char* number : {"2", "10", "1"})
        put(std::string("f") + number + ".pgm", std::string("P5 1 1 65535\n\x01") + number[0]);
    put("notes.txt", "not a frame");
    const auto firstPixels = [&](const std::vector<std::string>& names) {
        std::vector<std::string> inputs;
        for (const std::string& name : names)
            inputs.push_back(path(name));
        const auto source = velmo::recordings::openFrames(inputs, {});
        std::string found;
        for (velmo::camera::Frame frame; source->next(frame);)
            found += static_cast<char>(frame(0, 0) - 256);
        EXPECT_EQ(source->count(), found.size());
        return found;
    };
    EXPECT_EQ(firstPixels({""}), "121");
    EXPECT_EQ(firstPixels({"f?.pgm"}), "12");
    EXPECT_EQ(firstPixels({"f2.pgm", "f1.pgm"}), "21"); // as typed
}

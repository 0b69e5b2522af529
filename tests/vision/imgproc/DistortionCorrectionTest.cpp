#include "vision/imgproc/DistortionCorrection.h"

#include "tests/Support.h"

using namespace velmo::vision;

namespace {

static_assert(sizeof(PixelCorrInfo) == 10 && std::is_trivially_copyable_v<PixelCorrInfo>);

/// dy, dx and the weights of one pixel.
using Entry = std::vector<int>;
using Records = std::vector<PixelCorrInfo>;

struct Distortion : FilesTest
{
    std::string file(int width, int height, const std::vector<Entry>& entries, int depth = 6) const
    {
        std::ostringstream file;
        file << "P7\nWIDTH " << width << "\nHEIGHT " << height << "\nDEPTH " << depth
             << "\nMAXVAL 65535\nTUPLTYPE DISTORTION\nENDHDR\n";
        for (const Entry& entry : entries)
            for (const int value : entry)
                file << static_cast<char>(value >> 8) << static_cast<char>(value);
        return put("map.pam", file.str());
    }
};

const auto loaded = [](const std::string& path, int height = 0, int width = 0) {
    return DistortionCorrection::loadPixelCorrInfoFromPxm(path, height, width);
};

std::string error(const std::string& path, int height = 0, int width = 0)
{
    const Refusal refused = refusal([&] { loaded(path, height, width); });
    EXPECT_TRUE(refused == Refusal{} || refused.function == "loadPixelCorrInfoFromPxm") << refused;
    return refused.message;
}

const auto still = [](std::size_t pixels) { return std::vector<Entry>(pixels, Entry{0, 0, 1, 0, 0, 0}); };

} // namespace

TEST_F(Distortion, ReadsRecordsRowByRow)
{
    // Three columns: down one row and left one is +2, up one row and right one is -2.
    const std::string map = file(3, 2,
                                 {{0, 0, 1, 2, 3, 4},
                                  {1, -1, 65535, 6, 7, 8},
                                  {0, -1, 9, 9, 9, 9},
                                  {-1, 1, 10, 11, 12, 13},
                                  {-1, 0, 0, 0, 0, 0},
                                  {0, 0, 14, 15, 16, 17}});
    const Records records{{0, 1, 2, 3, 4},      {2, 65535, 6, 7, 8}, {-1, 9, 9, 9, 9},
                          {-2, 10, 11, 12, 13}, {-3, 0, 0, 0, 0},    {0, 14, 15, 16, 17}};
    EXPECT_EQ(loaded(map, 2, 3), records);
    const DistortionCorrection fromFile(map, 0, 0);
    EXPECT_EQ(DistortionCorrection(fromFile.getPixelCorrInfo()).getPixelCorrInfo(), records);
    EXPECT_EQ(loaded(file(1, 1, {{0, 0, 0, 0, 0, 0}})), Records(1));
    for (const PixelCorrInfo& other : {PixelCorrInfo(1, 1, 2, 3, 4), PixelCorrInfo(0, 1, 2, 3, 5)})
        EXPECT_NE(records[0], other);
}

TEST_F(Distortion, RefusesFilesThatAreNoMaps)
{
    const std::string closed = "Can not open Distortion Correction file!";
    EXPECT_THROW(loaded(file(1, 1, {})), Exception); // truncated
    EXPECT_EQ(error(put("map", "no image at all")), closed);
    EXPECT_EQ(refusal([] { DistortionCorrection("/no/such/file", 0, 0); }).message, closed);
    for (const int depth : {1, 5, 7})
        EXPECT_EQ(error(file(1, 1, {Entry(static_cast<std::size_t>(depth), 0)}, depth)),
                  "Need a distortion map of 6 channels of 16 bits, got " + std::to_string(depth) + "!");
}

TEST_F(Distortion, ChecksTheHeightBeforeTheWidth)
{
    const std::string map = file(3, 2, still(6));
    const std::string height = "Distortion data height does not fit to the expected image heigth!";
    const std::string width = "Distortion data width does not fit to the expected image width!";
    for (const auto& [rows, cols, message] :
         {std::tuple(1, 1, height), {3, 3, height}, {-2, 0, height}, {2, 2, width}, {0, 4, width}})
        EXPECT_EQ(error(map, rows, cols), message) << rows << " x " << cols;
    EXPECT_EQ(loaded(map, 2, 0).size() + loaded(map, 0, 3).size(), 12u);
}

TEST_F(Distortion, NamesThePixelWhoseSourceIsOutside)
{
    std::vector<Entry> entries = still(12);
    entries[5] = {-1, 0, 1, 0, 0, 0};
    EXPECT_EQ(error(file(6, 2, entries)), "Invalid replacement pixel data for: x=5 y=0!");
    entries[5] = {0, -5, 1, 0, 0, 0}; // the very first pixel is inside
    entries[10] = {0, 2, 1, 0, 0, 0};
    EXPECT_EQ(error(file(6, 2, entries)), "Invalid replacement pixel data for: x=4 y=1!");
    entries[10] = {0, 1, 1, 0, 0, 0}; // and so is the very last
    EXPECT_EQ(loaded(file(6, 2, entries)).size(), 12u);
}

TEST_F(Distortion, OffsetsWrapAtSixteenBits)
{
    // 300 rows down in a map of 300 columns are 90,000, which wraps to 24,464.
    std::vector<Entry> entries = still(300 * 301);
    entries[7] = {300, 0, 1, 0, 0, 0};
    EXPECT_EQ(loaded(file(300, 301, entries))[7].m_s16Offset, 24464);
    // A product of more than 32 bits: 65,535 x 65,537 is -65,537, which wraps to -1.
    entries = still(65537);
    entries[1] = {-1, 0, 1, 0, 0, 0};
    EXPECT_EQ(loaded(file(65537, 1, entries))[1].m_s16Offset, -1);
}

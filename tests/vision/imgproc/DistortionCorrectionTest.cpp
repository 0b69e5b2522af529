#include "vision/imgproc/DistortionCorrection.h"

#include "tests/Support.h"

using namespace velmo::vision;

namespace {

static_assert(sizeof(PixelCorrInfo) == 10 && std::is_trivially_copyable_v<PixelCorrInfo>);

/// dy, dx and the weights of one pixel.
using Entry = std::vector<int>;
using Records = std::vector<PixelCorrInfo>;

/// A map file, gone with the test.
class MapFile
{
public:
    MapFile(int width, int height, const std::vector<Entry>& entries, int depth = 6)
    {
        std::ofstream file(path, std::ios::binary);
        file << "P7\nWIDTH " << width << "\nHEIGHT " << height << "\nDEPTH " << depth
             << "\nMAXVAL 65535\nTUPLTYPE DISTORTION\nENDHDR\n";
        for (const Entry& entry : entries)
            for (const int value : entry) {
                const auto bits = static_cast<std::uint16_t>(value);
                file << static_cast<char>(bits >> 8) << static_cast<char>(bits & 255);
            }
    }

    Records load(int height = 0, int width = 0) const
    {
        return DistortionCorrection::loadPixelCorrInfoFromPxm(path, height, width);
    }

    std::string error(int height = 0, int width = 0) const
    {
        const Refusal refused = refusal([&] { load(height, width); });
        EXPECT_TRUE(refused == Refusal{} || refused.function == "loadPixelCorrInfoFromPxm") << refused;
        return refused.message;
    }

private:
    TemporaryFolder folder;

public:
    const std::string path = folder.path() / "map.pam";
};

std::vector<Entry> still(std::size_t pixels)
{
    return std::vector<Entry>(pixels, Entry{0, 0, 1, 0, 0, 0});
}

} // namespace

TEST(DistortionCorrection, ReadsRecordsRowByRow)
{
    // Three columns: down one row and left one is +2, up one row and right one is -2.
    const MapFile file(3, 2,
                       {{0, 0, 1, 2, 3, 4},
                        {1, -1, 65535, 6, 7, 8},
                        {0, -1, 9, 9, 9, 9},
                        {-1, 1, 10, 11, 12, 13},
                        {-1, 0, 0, 0, 0, 0},
                        {0, 0, 14, 15, 16, 17}});
    const Records records{{0, 1, 2, 3, 4},      {2, 65535, 6, 7, 8}, {-1, 9, 9, 9, 9},
                          {-2, 10, 11, 12, 13}, {-3, 0, 0, 0, 0},    {0, 14, 15, 16, 17}};
    EXPECT_EQ(file.load(2, 3), records);
    EXPECT_EQ(DistortionCorrection(file.path, 0, 0).getPixelCorrInfo(), records);
    EXPECT_EQ(DistortionCorrection(records).getPixelCorrInfo(), records);
    EXPECT_EQ(MapFile(1, 1, {{0, 0, 0, 0, 0, 0}}).load(), Records(1));
    for (const PixelCorrInfo& other : {PixelCorrInfo(1, 1, 2, 3, 4), PixelCorrInfo(0, 1, 2, 3, 5)})
        EXPECT_NE(records[0], other);
}

TEST(DistortionCorrection, RefusesFilesThatAreNoMaps)
{
    const std::string closed = "Can not open Distortion Correction file!";
    const MapFile file(1, 1, {});
    EXPECT_THROW(file.load(), Exception); // truncated
    std::ofstream(file.path) << "no image at all";
    EXPECT_EQ(file.error(), closed);
    EXPECT_EQ(refusal([] { DistortionCorrection("/no/such/file", 0, 0); }).message, closed);
    for (const int depth : {1, 5, 7})
        EXPECT_EQ(MapFile(1, 1, {Entry(static_cast<std::size_t>(depth), 0)}, depth).error(),
                  "Need a distortion map of 6 channels of 16 bits, got " + std::to_string(depth) + "!");
}

TEST(DistortionCorrection, ChecksTheHeightBeforeTheWidth)
{
    const MapFile file(3, 2, still(6));
    const std::string height = "Distortion data height does not fit to the expected image heigth!";
    const std::string width = "Distortion data width does not fit to the expected image width!";
    for (const auto& [rows, cols, message] :
         {std::tuple(1, 1, height), {3, 3, height}, {-2, 0, height}, {2, 2, width}, {0, 4, width}})
        EXPECT_EQ(file.error(rows, cols), message) << rows << " x " << cols;
    EXPECT_EQ(file.load(2, 0).size() + file.load(0, 3).size(), 12u);
}

TEST(DistortionCorrection, NamesThePixelWhoseSourceIsOutside)
{
    std::vector<Entry> entries = still(12);
    entries[5] = {-1, 0, 1, 0, 0, 0};
    EXPECT_EQ(MapFile(6, 2, entries).error(), "Invalid replacement pixel data for: x=5 y=0!");
    entries[5] = {0, -5, 1, 0, 0, 0}; // the very first pixel is inside
    entries[10] = {0, 2, 1, 0, 0, 0};
    EXPECT_EQ(MapFile(6, 2, entries).error(), "Invalid replacement pixel data for: x=4 y=1!");
    entries[10] = {0, 1, 1, 0, 0, 0}; // and so is the very last
    EXPECT_EQ(MapFile(6, 2, entries).load().size(), 12u);
}

TEST(DistortionCorrection, OffsetsWrapAtSixteenBits)
{
    // 300 rows down in a map of 300 columns are 90,000, which wraps to 24,464.
    std::vector<Entry> entries = still(300 * 301);
    entries[7] = {300, 0, 1, 0, 0, 0};
    EXPECT_EQ(MapFile(300, 301, entries).load()[7].m_s16Offset, 24464);
    // A product of more than 32 bits: 65,535 x 65,537 is -65,537, which wraps to -1.
    entries = still(65537);
    entries[1] = {-1, 0, 1, 0, 0, 0};
    EXPECT_EQ(MapFile(65537, 1, entries).load()[1].m_s16Offset, -1);
}

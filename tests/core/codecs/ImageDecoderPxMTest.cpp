#include "core/codecs/ImageDecoderPxM.h"

#include "core/Exception.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using velmo::exp::Exception;
using velmo::exp::ImageDecoderPxM;

namespace {

namespace fs = std::filesystem;
using Samples = std::vector<unsigned short>;
using namespace std::string_literals;

Samples samplesOf(const cv::Mat& image)
{
    EXPECT_EQ(image.depth(), CV_16U);
    Samples samples;
    for (int row = 0; row < image.rows; ++row) {
        const auto* pixels = image.ptr<unsigned short>(row);
        samples.insert(samples.end(), pixels, pixels + image.cols * image.channels());
    }
    return samples;
}

Samples countingTo(int count)
{
    Samples samples(static_cast<std::size_t>(count));
    std::iota(samples.begin(), samples.end(), static_cast<unsigned short>(0));
    return samples;
}

/// Three ways to hand on an image: as an arbitrary map, as bytes and as text.
constexpr const char* mg_aForms[] = {" | pamtopam", " | pamtopnm", " | pamtopnm | pnmtoplainpnm"};

class PxM : public testing::Test
{
protected:
    PxM() : m_folder(fs::temp_directory_path() / ("pxm_test_" + std::to_string(getpid())))
    {
        fs::create_directories(m_folder);
    }
    ~PxM() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    std::string written(const std::string& bytes) const
    {
        std::ofstream(path("image"), std::ios::binary) << bytes;
        return path("image");
    }

    bool opens(const std::string& bytes) { return decoder.open(written(bytes)); }

    cv::Mat grabbed(const cv::Rect* region = nullptr)
    {
        cv::Mat image;
        decoder.grab(image, region);
        return image;
    }

    Samples decoded(const std::string& bytes)
    {
        if (!opens(bytes))
            throw std::runtime_error("not opened: " + bytes);
        return samplesOf(grabbed());
    }

    /// What a command of netpbm tools writes; runs in the test's own folder.
    cv::Mat madeBy(const std::string& command)
    {
        if (std::system(("cd " + m_folder.string() + "; (" + command + ") >made").c_str()) != 0 ||
            !decoder.open(path("made")))
            throw std::runtime_error("failed: " + command);
        return grabbed();
    }

    void expectRefusedRaster(const std::string& bytes)
    {
        ASSERT_TRUE(opens(bytes)) << bytes;
        cv::Mat image(1, 1, CV_8U, cv::Scalar(7));
        EXPECT_THROW(decoder.grab(image, nullptr), Exception) << bytes;
        EXPECT_EQ(image.type(), CV_8U);
        EXPECT_EQ(image.at<unsigned char>(0, 0), 7);
    }

    ImageDecoderPxM decoder;

private:
    fs::path m_folder;
};

} // namespace

TEST_F(PxM, ReadsWhatTheNetpbmToolsWriteInGrey)
{
    // A row of every value from 0 to MAXVAL.
    for (const int maxValue : {2, 9, 255, 256, 4095, 65535}) {
        const std::string row = "pamseq 1 " + std::to_string(maxValue) + " -tupletype=GRAYSCALE";
        for (const char* form : mg_aForms) {
            const cv::Mat image = madeBy(row + form);
            EXPECT_EQ(image.type(), CV_16UC1);
            EXPECT_EQ(image.rows, 1);
            EXPECT_EQ(samplesOf(image), countingTo(maxValue + 1)) << row << form;
        }
    }
}

TEST_F(PxM, ReadsWhatTheNetpbmToolsWriteInColour)
{
    // Every triple of 0, 1, 2; blue runs fastest.
    Samples triples;
    for (int n = 0; n < 27; ++n)
        for (const int plane : {n / 9, n / 3 % 3, n % 3})
            triples.push_back(static_cast<unsigned short>(plane));
    for (const char* form : mg_aForms) {
        const cv::Mat image = madeBy("pamseq 3 2 -tupletype=RGB"s + form);
        EXPECT_EQ(image.type(), CV_16UC3);
        EXPECT_EQ(samplesOf(image), triples) << form;
    }
    // Black becomes blue, white becomes red.
    const std::string twoPixels = "pamseq 1 1 -tupletype=GRAYSCALE | pamdepth 65535 | pamtopnm";
    EXPECT_EQ(samplesOf(madeBy(twoPixels + "| pgmtoppm rgb:00/00/ff-rgb:ff/00/00")),
              (Samples{0, 0, 65535, 65535, 0, 0}));
    EXPECT_EQ(samplesOf(madeBy(twoPixels + "| pgmtoppm white | ppmtopgm")), (Samples{0, 65535}));
}

TEST_F(PxM, ReadsUpTo16ChannelsThatTheNetpbmToolsStack)
{
    for (const int channels : {2, 6, 16}) {
        std::string stack = "pamseq 1 999 >plane; pamstack";
        Samples expected;
        for (int n = 0; n < channels; ++n)
            stack += " plane";
        for (int n = 0; n < 1000 * channels; ++n)
            expected.push_back(static_cast<unsigned short>(n / channels));
        const cv::Mat image = madeBy(stack);
        EXPECT_EQ(image.type(), CV_MAKETYPE(CV_16U, channels));
        EXPECT_EQ(samplesOf(image), expected);
    }
}

TEST_F(PxM, DecodesARegionAsTheNetpbmToolsCutIt)
{
    const cv::Rect region(3, 1, 7, 2);
    for (const char* row : {"pamseq 1 19 -tupletype=GRAYSCALE", "pamseq 1 999 -tupletype=GRAYSCALE",
                            "pamseq 3 2 -tupletype=RGB"})
        for (const char* form : mg_aForms) {
            const std::string rows =
                std::string(row) + " | pamtopnm >a; pamflip -lr a >b; pnmcat -tb a b b a";
            const Samples cut =
                samplesOf(madeBy(rows + " | pamcut -left 3 -top 1 -width 7 -height 2" + form));
            const cv::Mat whole = madeBy(rows + form);
            ASSERT_EQ(whole.rows, 4);
            EXPECT_EQ(samplesOf(grabbed(&region)), cut) << rows << form;
        }
}

TEST_F(PxM, RefusesARegionThatLeavesTheImage)
{
    ASSERT_TRUE(opens("P5 4 3 255\nabcdefghijkl"));
    const int most = std::numeric_limits<int>::max();
    for (const cv::Rect& region :
         {cv::Rect(0, 0, 0, 3), cv::Rect(0, 0, 4, 0), cv::Rect(-1, 0, 2, 2), cv::Rect(0, -1, 2, 2),
          cv::Rect(0, 0, 5, 1), cv::Rect(0, 0, 1, 4), cv::Rect(4, 0, 1, 1), cv::Rect(1, 1, -1, 1),
          cv::Rect(most, 0, most, 1), cv::Rect(1, 1, most, most), cv::Rect(-most, 0, most, 1)})
        EXPECT_THROW(grabbed(&region), Exception) << region;
    const cv::Rect last(3, 2, 1, 1);
    EXPECT_EQ(samplesOf(grabbed(&last)), Samples{'l'});
}

TEST_F(PxM, TakesCommentsWhereverTheFormatAllowsThem)
{
    const Samples pixels{'A', 'B'};
    EXPECT_EQ(decoded("P5\n# made by hand\n2 1\n# two\n# lines\n255\nAB"), pixels);
    EXPECT_EQ(decoded("P5 #\n2#width\n #\r1 255 AB"), pixels);
    EXPECT_EQ(decoded("P5 2 1 2#in the middle of a number\n55 AB"), pixels);
    EXPECT_EQ(decoded("P5 2 1 255#before the raster\n\nAB"), pixels);
    EXPECT_EQ(decoded("P5 2 1 255\n#B"), (Samples{'#', 'B'})); // a sample, no comment
    EXPECT_EQ(decoded("P7\n# c\nWIDTH 2\n#WIDTH 3\nHEIGHT 1\n\n \t\nDEPTH 1\nMAXVAL 255\nENDHDR\nAB"),
              pixels);
    EXPECT_EQ(decoded("P2 2 1 255\n65# in the raster\n66"), pixels);
}

TEST_F(PxM, TakesAnyWhiteSpaceAndOneCharacterOfItBeforeTheRaster)
{
    EXPECT_EQ(decoded("P5\t\r\n\v\f 002\n\n1 255\tAB"), (Samples{'A', 'B'}));
    EXPECT_EQ(decoded("P5 2 1 255\n\nB"), (Samples{'\n', 'B'}));
    EXPECT_EQ(decoded("P2\n2 2\n9\n\n1\t02\r\n\n0003 4"), (Samples{1, 2, 3, 4}));
    EXPECT_EQ(decoded("P6 1 1 256 \1\0\0\1\0\xff"s), (Samples{256, 1, 255}));
    EXPECT_EQ(
        decoded("P7\nTUPLTYPE odd one\nTUPLTYPE X\n MAXVAL  65535 \r\nDEPTH 2\nHEIGHT 1\nWIDTH 1\nENDHDR\n"
                "\xff\xfe\0\1"s),
        (Samples{65534, 1}));
}

TEST_F(PxM, ReadsTheFirstOfSeveralImages)
{
    EXPECT_EQ(decoded("P5 1 1 255 AP5 1 1 255 B"), Samples{'A'});
}

TEST_F(PxM, ReadsImagesWithoutRowsOrColumns)
{
    for (const char* bytes :
         {"P5 10 0 65535\n", "P2 10 0 65535\n", "P6 0 4 255\n", "P5 2147483647 0 65535\n",
          "P5 0 2147483647 65535\n", "P7\nWIDTH 2147483647\nHEIGHT 0\nDEPTH 16\nMAXVAL 65535\nENDHDR\n"}) {
        ASSERT_TRUE(opens(bytes)) << bytes;
        EXPECT_TRUE(grabbed().empty()) << bytes;
    }
    ASSERT_TRUE(opens("P5 10 0 65535\n"));
    EXPECT_EQ(grabbed().size(), cv::Size(10, 0));
}

TEST_F(PxM, DoesNotOpenWhatIsNoSuchImage)
{
    for (const std::string& bytes :
         {""s,
          "P"s,
          "P5"s,
          "P1 1 1 1"s,
          "P4 1 1 \0"s,
          "P8 1 1 255 A"s,
          "GIF89a"s,
          "P52 1 255 AB"s,
          "P5 2 1"s,
          "P5 2 1 255"s,
          "P5 2 1 255#"s,
          "P5 2 1 255A"s,
          "P5 -2 1 255 AB"s,
          "P5 +2 1 255 AB"s,
          "P5 2 1.0 255 AB"s,
          "P5 2 1 0 AB"s,
          "P5 2 1 65536 AB"s,
          "P5 2147483648 1 255 A"s,
          "P5 4294967297 1 255 A"s,
          "P5 1 18446744073709551617 255 A"s,
          "P5 1 1 4294967551 A"s,
          "P5 # never ends"s,
          "P7 332\n#END\n"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\n"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR"s,
          "P7\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\nA"s,
          "P7\nWIDTH 1\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 0\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 17\nMAXVAL 255\nENDHDR\nABCDEFGHIJKLMNOPQ"s,
          "P7\nWIDTH 1 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH x\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nA"s,
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nCOLOUR 1\nENDHDR\nA"s}) {
        EXPECT_FALSE(opens(bytes)) << bytes;
        EXPECT_THROW(grabbed(), Exception) << bytes;
    }
}

TEST_F(PxM, DoesNotOpenWhatIsNoFile)
{
    EXPECT_FALSE(decoder.open(path("missing")));
    EXPECT_FALSE(decoder.open(path("")));
    EXPECT_FALSE(decoder.open(""));
    EXPECT_FALSE(decoder.open(std::string(5000, 'x')));
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(decoder.open(path("pipe"))); // and does not wait for a writer
    EXPECT_FALSE(decoder.open("/dev/zero"));
}

TEST_F(PxM, RefusesARasterThatTheFileDoesNotFill)
{
    for (const std::string& bytes :
         {"P5 2 2 255 ABC"s, "P5 2 2 256 \0A\0B\0C\0"s, "P6 1 1 255 AB"s, "P2 2 2 255 1 2 3"s, "P2 2 2 255 "s,
          // Products that wrap: 65536 * 65536 at 32 bits, 2^31 * 2^31 * 16 * 2 at 64.
          "P5 65536 65536 255 A"s, "P5 2147483647 2147483647 65535 A"s, "P3 2147483647 2147483647 65535 1"s,
          "P6 2147483647 2147483647 65535 A"s,
          "P7\nWIDTH 2147483647\nHEIGHT 2147483647\nDEPTH 16\nMAXVAL 65535\nENDHDR\nA"s,
          "P7\nWIDTH 268435456\nHEIGHT 2147483647\nDEPTH 16\nMAXVAL 65535\nENDHDR\nA"s})
        expectRefusedRaster(bytes);
}

TEST_F(PxM, RefusesARasterWithASampleThatIsNone)
{
    for (const std::string& bytes :
         {"P5 2 1 64 @A"s, "P5 1 1 256 \1\1"s, "P2 2 1 10 10 11"s, "P2 2 1 10 1 -1"s, "P2 2 1 10 1 +1"s,
          "P2 2 1 10 1 a"s, "P2 2 1 10 1 2a"s, "P2 1 1 65535 65536"s, "P2 1 1 65535 18446744073709551616"s,
          "P2 2 1 255 1 #2\n"s})
        expectRefusedRaster(bytes);
    EXPECT_EQ(decoded("P5 2 1 64 ?@"), (Samples{'?', '@'}));
}

TEST_F(PxM, HoldsOneImageAtATime)
{
    EXPECT_THROW(grabbed(), Exception);
    ASSERT_TRUE(opens("P5 1 1 255 A"));
    const cv::Mat first = grabbed();
    EXPECT_EQ(samplesOf(grabbed()), Samples{'A'});
    ImageDecoderPxM copy = decoder;

    ASSERT_TRUE(opens("P5 2 1 255 BC"));
    EXPECT_EQ(samplesOf(grabbed()), (Samples{'B', 'C'}));
    EXPECT_EQ(samplesOf(first), Samples{'A'});
    cv::Mat image;
    copy.grab(image, nullptr);
    EXPECT_EQ(samplesOf(image), Samples{'A'});

    ImageDecoderPxM moved = std::move(decoder);
    EXPECT_THROW(grabbed(), Exception); // NOLINT(bugprone-use-after-move)
    moved.grab(image, nullptr);
    EXPECT_EQ(samplesOf(image), (Samples{'B', 'C'}));

    EXPECT_FALSE(moved.open(path("missing")));
    EXPECT_THROW(moved.grab(image, nullptr), Exception);
}

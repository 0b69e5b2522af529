#include "core/codecs/ImageDecoderPxM.h"

#include "tests/Support.h"

#include <sys/stat.h>

using velmo::exp::ImageDecoderPxM;

namespace {

using Samples = std::vector<unsigned short>;
using namespace std::string_literals;

Samples samplesOf(const cv::Mat& image)
{
    EXPECT_EQ(image.depth(), CV_16U);
    const cv::Mat_<unsigned short> samples = image.empty() ? cv::Mat() : image.reshape(1);
    return image.empty() ? Samples{} : Samples(samples.begin(), samples.end());
}

/// Three ways to hand on an image: as an arbitrary map, as bytes and as text.
constexpr const char* mg_aForms[] = {" | pamtopam", " | pamtopnm", " | pamtopnm | pnmtoplainpnm"};

struct PxM : FilesTest
{
    bool opens(const std::string& bytes) { return decoder.open(put("image", bytes)); }

    cv::Mat grabbed(const cv::Rect* region = nullptr)
    {
        cv::Mat image;
        decoder.grab(image, region);
        return image;
    }

    Samples decoded(const std::string& bytes)
    {
        EXPECT_TRUE(opens(bytes)) << bytes;
        return samplesOf(grabbed());
    }

    /// What a command of netpbm tools writes; runs in the test's own folder.
    cv::Mat madeBy(const std::string& command)
    {
        const std::string quiet = "cd " + path("") + "; (" + command + ") >made 2>/dev/null";
        if (std::system(quiet.c_str()) != 0 || !decoder.open(path("made")))
            throw std::runtime_error("failed: " + command);
        return grabbed();
    }

    ImageDecoderPxM decoder;
};

} // namespace

TEST_F(PxM, ReadsWhatTheNetpbmToolsWrite)
{
    // A row of every value from 0 to MAXVAL.
    for (const int most : {2, 9, 255, 256, 4095, 65535}) {
        Samples values(static_cast<std::size_t>(most) + 1);
        std::iota(values.begin(), values.end(), static_cast<unsigned short>(0));
        for (const char* form : mg_aForms) {
            const cv::Mat image = madeBy("pamseq 1 " + std::to_string(most) + " -tupletype=GRAYSCALE" + form);
            EXPECT_TRUE(image.type() == CV_16UC1 && image.rows == 1);
            EXPECT_EQ(samplesOf(image), values) << most << form;
        }
    }
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
    for (const int channels : {2, 6, 16}) {
        Samples expected;
        for (int n = 0; n < 1000 * channels; ++n)
            expected.push_back(static_cast<unsigned short>(n / channels));
        const cv::Mat image =
            madeBy("pamseq 1 999 >plane; pamstack $(yes plane | head -n " + std::to_string(channels) + ")");
        EXPECT_EQ(image.type(), CV_MAKETYPE(CV_16U, channels));
        EXPECT_EQ(samplesOf(image), expected);
    }
}

TEST_F(PxM, DecodesARegionAsTheNetpbmToolsCutIt)
{
    const cv::Rect region(3, 1, 7, 2);
    for (const std::string row : {"pamseq 1 19 -tupletype=GRAYSCALE", "pamseq 1 999 -tupletype=GRAYSCALE",
                                  "pamseq 3 2 -tupletype=RGB"})
        for (const char* form : mg_aForms) {
            const std::string rows = row + " | pamtopnm >a; pamflip -lr a >b; pnmcat -tb a b b a";
            const auto cut = samplesOf(madeBy(rows + " | pamcut -left 3 -top 1 -width 7 -height 2" + form));
            ASSERT_EQ(madeBy(rows + form).rows, 4);
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

TEST_F(PxM, TakesCommentsAndWhiteSpaceWhereverTheFormatAllowsThem)
{
    for (const char* bytes :
         {"P5\n# made by hand\n2 1\n# two\n# lines\n255\nAB", "P5 #\n2#width\n #\r1 255 AB",
          "P5 2 1 2#in the middle of a number\n55 AB", "P5 2 1 255#before the raster\n\nAB",
          "P7\n# c\nWIDTH 2\n#WIDTH 3\nHEIGHT 1\n\n \t\nDEPTH 1\nMAXVAL 255\nENDHDR\nAB",
          "P2 2 1 255\n65# in the raster\n66", "P5\t\r\n\v\f 002\n\n1 255\tAB",
          "P2\n2 1 255\n\n065\r\n\t0066"})
        EXPECT_EQ(decoded(bytes), (Samples{'A', 'B'})) << bytes;
    EXPECT_EQ(decoded("P2 2 1 9 1 2"), (Samples{1, 2}));       // no more bytes than that
    EXPECT_EQ(decoded("P5 2 1 255\n#B"), (Samples{'#', 'B'})); // a sample, no comment
    EXPECT_EQ(decoded("P5 2 1 255\n\nB"), (Samples{'\n', 'B'}));
    EXPECT_EQ(decoded("P6 1 1 256 \1\0\0\1\0\xff"s), (Samples{256, 1, 255}));
    EXPECT_EQ(decoded("P5 1 1 255 AP5 1 1 255 B"), Samples{'A'}); // the first of several images
    EXPECT_EQ(
        decoded("P7\nTUPLTYPE odd one\nTUPLTYPE X\n MAXVAL  65535 \r\nDEPTH 2\nHEIGHT 1\nWIDTH 1\nENDHDR\n"
                "\xff\xfe\0\1"s),
        (Samples{65534, 1}));
}

TEST_F(PxM, ReadsImagesWithoutRowsOrColumns)
{
    for (const char* bytes :
         {"P5 10 0 65535\n", "P2 10 0 65535\n", "P6 0 4 255\n", "P5 2147483647 0 65535\n",
          "P5 0 2147483647 65535\n", "P7\nWIDTH 2147483647\nHEIGHT 0\nDEPTH 16\nMAXVAL 65535\nENDHDR\n"})
        EXPECT_TRUE(decoded(bytes).empty()) << bytes;
    ASSERT_TRUE(opens("P5 10 0 65535\n"));
    EXPECT_EQ(grabbed().size(), cv::Size(10, 0));
}

TEST_F(PxM, DoesNotOpenWhatIsNoSuchImage)
{
    for (const char* bytes :
         {// Cut off, or of another kind.
          "", "P", "P5", "P5 2 1", "P5 2 1 255", "P5 2 1 255#", "P5 # never ends", "P7 332\n#END\n",
          "P1 1 1 1", "P8 1 1 255 A", "GIF89a",
          // Numbers that are none, or out of range.
          "P52 1 255 AB", "P5 2 1 255A", "P5 -2 1 255 AB", "P5 +2 1 255 AB", "P5 2 1.0 255 AB", "P5 2 1 0 AB",
          "P5 2 1 65536 AB", "P5 2147483648 1 255 A", "P5 4294967297 1 255 A",
          "P5 1 18446744073709551617 255 A", "P5 1 1 4294967551 A"}) {
        EXPECT_FALSE(opens(bytes)) << bytes;
        EXPECT_THROW(grabbed(), Exception) << bytes;
    }
    // Lines of a header of names: one is missing, twice there, out of range or unknown.
    const std::string good = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nABCDEFGHIJKLMNOPQ";
    const auto opensWith = [&](const std::string& line, const char* instead) {
        return opens(std::string(good).replace(good.find(line), line.size(), instead));
    };
    EXPECT_TRUE(opens(good));
    for (const char* line :
         {"WIDTH 1\n", "HEIGHT 1\n", "DEPTH 1\n", "MAXVAL 255\n", "ENDHDR\n", "\nABCDEFGHIJKLMNOPQ"})
        EXPECT_FALSE(opensWith(line, "")) << line;
    for (const char* instead : {"WIDTH 1\nWIDTH 1", "WIDTH 1 1", "WIDTH", "WIDTH x", "WIDTH 1\nCOLOUR 1"})
        EXPECT_FALSE(opensWith("WIDTH 1", instead)) << instead;
    EXPECT_FALSE(opensWith("DEPTH 1", "DEPTH 0") || opensWith("DEPTH 1", "DEPTH 17"));
}

TEST_F(PxM, DoesNotOpenWhatIsNoFile)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0); // and does not wait for a writer
    for (const std::string& name :
         {path("missing"), path(""), ""s, std::string(5000, 'x'), path("pipe"), "/dev/zero"s})
        EXPECT_FALSE(decoder.open(name)) << name;
    // Of what is none, only the beginning is read: nobody has memory for this.
    std::filesystem::resize_file(put("recording", "raw"), std::uintmax_t{1} << 40);
    EXPECT_FALSE(decoder.open(path("recording")));
}

TEST_F(PxM, RefusesARasterThatTheFileDoesNotFillOrThatHoldsNoSamples)
{
    for (const std::string& bytes :
         {"P5 2 2 255 ABC"s, "P5 2 2 256 \0A\0B\0C\0"s, "P6 1 1 255 AB"s, "P2 2 2 255 1 2 3"s, "P2 2 2 255 "s,
          // Products that wrap: 65536 * 65536 at 32 bits, 2^31 * 2^31 * 16 * 2 at 64.
          "P5 65536 65536 255 A"s, "P5 2147483647 2147483647 65535 A"s, "P3 2147483647 2147483647 65535 1"s,
          "P6 2147483647 2147483647 65535 A"s,
          "P7\nWIDTH 2147483647\nHEIGHT 2147483647\nDEPTH 16\nMAXVAL 65535\nENDHDR\nA"s,
          "P7\nWIDTH 268435456\nHEIGHT 2147483647\nDEPTH 16\nMAXVAL 65535\nENDHDR\nA"s, "P5 2 1 64 @A"s,
          "P5 1 1 256 \1\1"s, "P2 2 1 10 10 11"s, "P2 2 1 10 1 -1"s, "P2 2 1 10 1 +1"s, "P2 2 1 10 1 a"s,
          "P2 2 1 10 1 2a"s, "P2 1 1 65535 65536"s, "P2 1 1 65535 18446744073709551616"s,
          "P2 2 1 255 1 #2\n"s}) {
        ASSERT_TRUE(opens(bytes)) << bytes;
        cv::Mat image(1, 1, CV_8U, cv::Scalar(7));
        EXPECT_THROW(decoder.grab(image, nullptr), Exception) << bytes;
        EXPECT_TRUE(same(image, cv::Mat(1, 1, CV_8U, cv::Scalar(7))));
    }
    // Refused by the header and the size alone, before memory is asked for.
    ASSERT_TRUE(opens("P5 60000 60000 65535\n" + std::string(1000, 'A')));
    EXPECT_EQ(refusal([&] { grabbed(); }).message,
              "Raster of 60000 rows of 60000 samples does not fit the file!");
    EXPECT_EQ(decoded("P5 2 1 64 ?@"), (Samples{'?', '@'}));
}

TEST_F(PxM, HoldsOneImageAtATime)
{
    EXPECT_EQ(refusal([&] { grabbed(); }).message, "No image is open!");
    EXPECT_EQ(decoded("P5 1 1 255 A"), Samples{'A'});
    const cv::Mat first = grabbed();
    ImageDecoderPxM copy = decoder;

    EXPECT_EQ(decoded("P5 2 1 255 BC"), (Samples{'B', 'C'}));
    EXPECT_EQ(samplesOf(first), Samples{'A'});
    cv::Mat image;
    copy.grab(image, nullptr);
    EXPECT_EQ(samplesOf(image), Samples{'A'});

    ImageDecoderPxM moved = std::move(decoder);
    EXPECT_THROW(grabbed(), Exception);
    moved.grab(image, nullptr);
    EXPECT_EQ(samplesOf(image), (Samples{'B', 'C'}));
    EXPECT_FALSE(moved.open(path("missing")));
    EXPECT_THROW(moved.grab(image, nullptr), Exception);
}

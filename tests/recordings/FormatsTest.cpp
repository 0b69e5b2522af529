#include "recordings/ByteOrder.h"

#include "recordings/FrameFiles.h"
#include "recordings/GreyWriters.h"
#include "recordings/PngFile.h"
#include "tests/Support.h"

#include <tiffio.h>

namespace {

using namespace velmo::recordings;

using Images = std::vector<cv::Mat>;

struct Formats : FilesTest
{
    OutputFile output(const std::string& name) const { return {path(name), name}; }

    /// What is in the file, and that it has the unit and says how many frames it has.
    std::vector<Frame> read(const std::string& name, const std::string& unit = "") const
    {
        const auto source = openFrameFiles(name, {path(name)}, true);
        EXPECT_EQ(source->unit(), unit) << name;
        std::vector<Frame> frames;
        for (Frame frame; source->next(frame);)
            frames.push_back(frame);
        EXPECT_EQ(source->count(), frames.size()) << name;
        return frames;
    }

    std::string refusalOf(const std::string& name) const
    {
        return refusal([&] { read(name); }).message;
    }
};

const auto writeAll = [](std::unique_ptr<ImageWriter> writer, const Images& images) {
    for (const cv::Mat& image : images)
        writer->write(image);
    writer->finish();
};

const auto expectEqual = [](const std::vector<Frame>& frames, const Images& wanted, const std::string& what) {
    ASSERT_EQ(frames.size(), wanted.size()) << what;
    for (std::size_t i = 0; i < frames.size(); ++i)
        EXPECT_TRUE(same(frames[i], wanted[i])) << what << ", frame " << i;
};

/// Regions of larger frames, so that rows are padded; each has the values at which bytes and signs change.
const auto paddedFrames = []() {
    Images frames;
    for (int i = 0; i < 3; ++i) {
        cv::Mat large(9, 11, CV_16U);
        cv::randu(large, 0, 65536);
        frames.push_back(large(cv::Rect(2, 1, 7, 5)));
        int x = 0;
        for (const int value : {0, 255, 256, 32767, 32768, 65280, 65535})
            frames.back().at<unsigned short>(i, x++) = static_cast<unsigned short>(value);
    }
    return frames;
};

TEST_F(Formats, OfCountsGiveEveryBitBackAndTheUnit)
{
    const Images frames = paddedFrames();
    for (const auto count : {std::optional<std::size_t>(3), {}}) { // classic and BigTIFF
        writeAll(createTiff(output("a.tiff"), count, "kelvin/16"), frames);
        expectEqual(read("a.tiff", "kelvin/16"), frames, "TIFF");
    }
    writeAll(createNpy(output("a.npy")), frames);
    expectEqual(read("a.npy"), frames, "NumPy");

    writePng(output("a.png"), frames[0], "planck:21106.77,1501,1,-7340,0.012545");
    expectEqual(read("a.png", "planck:21106.77,1501,1,-7340,0.012545"), {frames[0]}, "PNG");
    writePgm(output("a.pgm"), frames[1], "celsius/10");
    expectEqual(read("a.pgm", "celsius/10"), {frames[1]}, "PGM");
}

/// A TIFF of other programs: high byte first, packed, in tiles, with a thumbnail between the pages.
const auto writeForeignTiff = [](const std::string& path, const Images& pages) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "wb");
    for (std::size_t i = 0; i < 2 * pages.size(); ++i) {
        const bool thumbnail = i % 2 == 0;
        const cv::Mat page = thumbnail ? pages[i / 2](cv::Rect(0, 0, 2, 2)) : pages[i / 2];
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, thumbnail ? FILETYPE_REDUCEDIMAGE : FILETYPE_PAGE);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.cols);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.rows);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * static_cast<int>(page.elemSize1()));
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        for (const auto tag : {TIFFTAG_TILEWIDTH, TIFFTAG_TILELENGTH})
            TIFFSetField(tiff, tag, 16);
        cv::Mat whole(32, 32, page.type(), cv::Scalar::all(77));
        page.copyTo(whole(cv::Rect({}, page.size())));
        for (int y = 0; y < page.rows; y += 16)
            for (int x = 0; x < page.cols; x += 16) {
                cv::Mat tile = whole(cv::Rect(x, y, 16, 16)).clone();
                TIFFWriteTile(tiff, tile.data, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                              0, 0);
            }
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
};

TEST_F(Formats, ReadEveryPageOfATiffAndNoThumbnail)
{
    for (const int type : {CV_8U, CV_16U}) {
        Images pages;
        for (int i = 0; i < 3; ++i) {
            pages.emplace_back(19, 18, type); // not whole tiles
            cv::randu(pages.back(), 0, type == CV_8U ? 256 : 65536);
        }
        writeForeignTiff(path("a.tif"), pages);
        Images expected;
        for (const cv::Mat& page : pages)
            expected.push_back(Frame(page));
        expectEqual(read("a.tif"), expected, "TIFF");
    }
}

/// A NumPy file: the dictionary as some program wrote it, and the values.
const auto npy = [](const std::string& dictionary, const std::string& values, char version = 1) {
    const std::string length{static_cast<char>(dictionary.size()), '\0', '\0', '\0'};
    return std::string("\x93NUMPY") + version + '\0' + length.substr(0, version == 1 ? 2 : 4) + dictionary +
           values;
};

TEST_F(Formats, ReadNumPyArraysOfOtherPrograms)
{
    const std::tuple<const char*, std::string, Images> arrays[] = {
        {"{'descr': '>u2', 'fortran_order': False, 'shape': (2, 1, 2), }",
         "\1\2\3\4\5\6\7\x8",
         {(Frame(1, 2) << 0x102, 0x304), (Frame(1, 2) << 0x506, 0x708)}},
        {"{\"shape\": (1,2), \"fortran_order\":False, \"descr\":\"|u1\"}",
         "\x80\xff",
         {(Frame(1, 2) << 128, 255)}},
        {"{'descr': '<i2', 'fortran_order': False, 'shape': (1, 1, 1)}",
         "\xff\xff",
         {(Frame(1, 1) << 65535)}},
        {"{'descr': '<u2', 'fortran_order': False, 'shape': (0, 4, 4)}", "", {}},
    };
    for (const auto& [dictionary, values, frames] : arrays)
        for (const char version : {1, 2}) { // lengths of headers of two bytes and of four
            put("a.npy", npy(dictionary, values, version));
            expectEqual(read("a.npy"), frames, dictionary);
        }
}

TEST_F(Formats, OfDegreesBecomeCountsOfOneScale)
{
    const cv::Mat room = (cv::Mat_<float>(1, 4) << -273.15F, 0.004F, 20.126F, 382.2F);
    const Images kelvin = {(Frame(1, 4) << 0, 27315, 29328, 65535)};
    writeAll(createTiff(output("a.tif"), 1, ""), {room});
    writeAll(createNpy(output("a.npy")), {room});
    expectEqual(read("a.tif", "centikelvin"), kelvin, "TIFF");
    expectEqual(read("a.npy", "centikelvin"), kelvin, "NumPy");

    // 0 to 655.35 degrees in all, though no frame has both: a count is a hundredth from 0.
    const Images furnace = {(cv::Mat_<float>(1, 2) << 0, 1), (cv::Mat_<float>(1, 2) << 655.35F, 327.68F)};
    writeAll(createNpy(output("a.npy")), {furnace[0]});
    writeAll(createTiff(output("b.tif"), 1, ""), {furnace[1]});
    const auto source = openFrameFiles("two", {path("a.npy"), path("b.tif")}, true);
    Frame first, second;
    ASSERT_TRUE(source->next(first) && source->next(second));
    expectEqual({first, second}, {(Frame(1, 2) << 0, 100), (Frame(1, 2) << 65535, 32768)}, "two files");
    double gain = 0;
    ASSERT_EQ(std::sscanf(source->unit().c_str(), "linear:%lf:0", &gain), 1);
    EXPECT_NEAR(gain, 0.01, 1e-8);

    // What was below all temperatures is under absolute zero, where no scale has any; 20.01 degrees above it
    // are the last of 65535 steps.
    writeAll(createNpy(output("a.npy")), {(cv::Mat_<float>(1, 3) << -HUGE_VALF, -253.15F, -263.155F)});
    const auto cold = openFrameFiles("one", {path("a.npy")}, true);
    Frame counts;
    ASSERT_TRUE(cold->next(counts));
    EXPECT_THAT(counts, testing::ElementsAre(0, 65535, testing::AnyOf(32767, 32768)));
    EXPECT_THAT(cold->unit(), testing::EndsWith(":-273.16000000000003"));
}

TEST_F(Formats, RefuseWhatTheyCannotMeanInOneLineThatNamesTheFile)
{
    for (const auto& [value, why] :
         {std::pair(std::nanf(""), "a.npy, frame 2: no temperature at x 0, y 1"), {HUGE_VALF, "infinite"}}) {
        writeAll(createNpy(output("a.npy")),
                 {(cv::Mat_<float>(2, 2) << 1, 2, 3, 4), (cv::Mat_<float>(2, 2) << 1, 2, value, 4)});
        EXPECT_THAT(refusalOf("a.npy"), HasSubstr(why));
    }

    const std::string words(5 << 19, 'a'); // of both the file and its software
    writeAll(createTiff(output("words.tif"), 1, words), {Frame(1, 1, 7)});
    TIFF* const tiff = TIFFOpen(path("words.tif").c_str(), "r+");
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, words.c_str());
    TIFFRewriteDirectory(tiff);
    TIFFClose(tiff);
    std::string tags("II*\0\x8\0\0\0\x2c\1", 10); // 300 of them, the first describe a page
    for (int i = 0; i < 300; ++i) {
        const int tag = i < 24 ? 256 + i : 40000 + i;
        tags += {static_cast<char>(tag & 255), static_cast<char>(tag >> 8), 3, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    }

    writePng(output("good.png"), Frame(9, 9, 7));
    const std::string good = bytes("good.png");
    std::string large = good;
    large.replace(16, 4, std::string("\0\0\x40\1", 4)); // a width of 16385
    writePng(output("colour.png"), cv::Mat(2, 2, CV_8UC3, cv::Scalar::all(1)));
    writePng(output("text.png"), Frame(9, 9, 7), std::string(1 << 19, 'x'));
    std::string texts = bytes("text.png");
    const std::string text = texts.substr(33, texts.find("IDAT") - 4 - 33); // behind the header
    for (int n = 0; n < 40; ++n)
        texts.insert(33, text);
    const std::string u2 = "{'descr': '<u2', 'fortran_order': False, 'shape': ";
    const std::pair<const char*, std::string> files[] = {
        {"PNG", large},
        {"PNG", good.substr(0, good.size() - 20)},
        {"colours", bytes("colour.png")},
        {"texts take more than 16 MiB", texts},
        {"texts take more than 16 MiB", std::string(good).insert(33, "\x55\1\1\1tEXt")},
        {"TIFF", "II*\0"},
        {"TIFF", std::string("II*\0\x8\0\0\0\1\0", 10)},
        {"more than 4194304 bytes", bytes("words.tif")},
        {"tags, at most 256", tags + std::string(4, '\0')},
        {"4 frames of 8 bytes, behind it are 7 bytes", npy(u2 + "(4, 2, 2)}", "1234567")},
        {"16385x1 pixels", npy(u2 + "(1, 1, 16385)}", "12")},
        {"up to 4294967295", npy(u2 + "(99999999999, 1, 1)}", "12")},
        {"rows x columns", npy(u2 + "(2,)}", "1234")},
        {"Fortran", npy("{'descr': '<u2', 'fortran_order': True, 'shape': (1, 1)}", "12")},
        {"type is c8", npy("{'descr': '<c8', 'fortran_order': False, 'shape': (1, 1)}", "12345678")},
        {"header", npy("{'descr': '<u2', 'shape': (1, 1)}", "12")},
        {"header has 65535 bytes", std::string("\x93NUMPY\1\0\xff\xff", 10)},
        {"cut off", "\x93NUMPY\1"},
        {"Raster of 4 rows", "P5 4 4 65535\nabc"},
        {"not a PGM", "hello"},
        {"not a PGM", ""},
    };
    for (const auto& [why, content] : files) {
        put("a.bin", content);
        EXPECT_THAT(refusalOf("a.bin"),
                    testing::AllOf(HasSubstr("a.bin"), HasSubstr(why), testing::Not(HasSubstr("\n"))));
    }
}

TEST_F(Formats, OfOneRecordingHaveOneUnit)
{
    writePng(output("1.png"), Frame(1, 1, 1), "kelvin/64");
    writePgm(output("2.pgm"), Frame(1, 1, 2), "kelvin/16");
    writeAll(createNpy(output("3.npy")), {cv::Mat(1, 1, CV_32F, 20.F)});
    const auto readBoth = [&](const char* second, bool sameUnit) {
        const auto source = openFrameFiles("both", {path("1.png"), path(second)}, sameUnit);
        Frame frame;
        while (source->next(frame)) {
        }
    };
    EXPECT_THROW(readBoth("2.pgm", true), Exception);
    EXPECT_NO_THROW(readBoth("2.pgm", false));
    EXPECT_THROW(readBoth("3.npy", false), Exception); // counts and degrees
}

TEST(ByteOrder, IsTurnedInEveryChannel)
{
    const cv::Mat values = cv::Mat(2, 18, CV_16U, cv::Scalar(0x0102)).reshape(6);
    EXPECT_EQ(cv::countNonZero(inOrder(values, true).reshape(1) == 0x0201), 36);
}

} // namespace

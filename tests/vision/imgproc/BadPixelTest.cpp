#include "vision/imgproc/BadPixel.h"

#include "tests/Support.h"

using namespace velmo::exp::vision;
using velmo::exp::Endian;

namespace {

using Values = std::vector<int>;
using namespace std::string_literals;

Values valuesOf(const BadPixel& record)
{
    Values values{record.pixel.x, record.pixel.y};
    for (const Pixel& pixel : record.replacePixel)
        values.insert(values.end(), {pixel.x, pixel.y});
    return values;
}

/// Ten values that differ in both bytes, the extremes and -1 among them; little-endian and big-endian.
const BadPixel mg_oRecord = {{1, 2}, {{-1, 0x0304}, {32767, -32768}, {0x0506, 7}, {8, -9}}};
const std::string mg_strLittle = "\x01\0\x02\0\xff\xff\x04\x03\xff\x7f\0\x80\x06\x05\x07\0\x08\0\xf7\xff"s;
const std::string mg_strBig = "\0\x01\0\x02\xff\xff\x03\x04\x7f\xff\x80\0\x05\x06\0\x07\0\x08\xff\xf7"s;

struct BadPixelFile : FilesTest
{
    std::vector<BadPixel> loaded(const std::string& bytes) const
    {
        return BadPixelTools::loadBadPixelFromPxm(put("map", bytes));
    }
};

const auto pgm = [](int rows, int columns, const std::string& raster) {
    return "P5 " + std::to_string(columns) + " " + std::to_string(rows) + " 65535\n" + raster;
};

} // namespace

TEST(BadPixel, TakesItsNeighboursWithoutLookingAtAFrame)
{
    BadPixel record;
    EXPECT_EQ(valuesOf(record), Values(10, 0));
    record.setStandardReplacePixel();
    EXPECT_EQ(valuesOf(record), (Values{0, 0, -1, 0, 1, 0, 0, -1, 0, 1}));
    record.pixel = {32767, -32768};
    record.setStandardReplacePixel();
    EXPECT_EQ(valuesOf(record),
              (Values{32767, -32768, 32766, -32768, -32768, -32768, 32767, 32767, 32767, -32767}));
}

TEST(BadPixel, IsTwentyBytesInEitherOrderAtAnyAddress)
{
    const bool bBig = velmo::exp::Endianness::isBigEndianSystem();
    const std::string &native = bBig ? mg_strBig : mg_strLittle, &swapped = bBig ? mg_strLittle : mg_strBig;
    EXPECT_EQ(mg_oRecord.sizeofType(), 20U);
    for (const auto& [endian, bytes] :
         {std::pair(Endian::Native, native), {Endian::Swapped, swapped}, {Endian(7), native}}) {
        std::string buffer(23, '~');
        EXPECT_EQ(mg_oRecord.serialize(endian, buffer.data() + 1), 20U);
        EXPECT_EQ(buffer, "~" + bytes + "~~");

        BadPixel record;
        unsigned long size = 99;
        record.deserialize(endian, buffer.data() + 1, size);
        EXPECT_EQ(size, 20U);
        EXPECT_TRUE(record == mg_oRecord && !(record != mg_oRecord));
        record.replacePixel[3].y = 9;
        EXPECT_TRUE(record != mg_oRecord);
    }
}

TEST_F(BadPixelFile, HoldsARecordInEachRow)
{
    const cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat({mg_oRecord, {{3, 4}, {}}, mg_oRecord});
    const cv::Mat expected = (cv::Mat_<short>(3, 10) << 1, 2, -1, 772, 32767, -32768, 1286, 7, 8, -9, //
                              3, 4, 0, 0, 0, 0, 0, 0, 0, 0,                                           //
                              1, 2, -1, 772, 32767, -32768, 1286, 7, 8, -9);
    EXPECT_TRUE(same(image, expected));
    EXPECT_EQ(BadPixelTools::convertBadPixelToPxmFormat({}).size(), cv::Size(10, 0));
    EXPECT_EQ(BadPixelTools::convertBadPixelToPxmFormat({}).type(), CV_16SC1);
}

TEST_F(BadPixelFile, IsReadInItsOrder)
{
    const BadPixel second{{257, 257}, {{257, 257}, {257, 257}, {257, 257}, {257, 257}}};
    const std::string ones(20, '\x01');
    const std::vector<BadPixel> both{mg_oRecord, second};
    EXPECT_EQ(loaded(pgm(2, 10, mg_strBig + ones)), both);
    EXPECT_EQ(loaded(pgm(2, 11, mg_strBig + "??" + ones + "??")), both); // what lies beyond is nobody's
    EXPECT_EQ(loaded("P2 10 1 65535\n1 2 65535 772 32767 32768 1286 7 8 65527\n")[0], mg_oRecord);
    EXPECT_TRUE(loaded(pgm(0, 10, "")).empty());
}

TEST_F(BadPixelFile, IsRefusedIfItHoldsNoRecords)
{
    EXPECT_EQ(refusal([] { BadPixelTools::loadBadPixelFromPxm("/no/such/file"); }),
              (Refusal{"Can not open bad pixel file!", "loadBadPixelFromPxm"}));
    EXPECT_EQ(refusal([&] { loaded("no image"); }).message, "Can not open bad pixel file!");
    EXPECT_THROW(loaded(pgm(1, 9, std::string(18, '\0'))), Exception);
    EXPECT_THROW(loaded(pgm(2, 10, std::string(20, '\0'))), Exception); // half of the raster
    EXPECT_THROW(loaded("P6 10 1 65535\n" + std::string(60, '\0')), Exception);
}

TEST_F(BadPixelFile, HoldsAtMost65535Records)
{
    std::vector<BadPixel> records(65535, mg_oRecord);
    records.back().pixel.x = 77;
    const cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat(records);
    EXPECT_TRUE(image.rows == 65535 && image.at<short>(65534, 0) == 77);
    records.emplace_back();
    EXPECT_THROW(BadPixelTools::convertBadPixelToPxmFormat(records), Exception);
    EXPECT_EQ(loaded(pgm(65535, 10, std::string(65535 * 20, '\0'))).size(), 65535U);
    EXPECT_THROW(loaded(pgm(65536, 10, std::string(65536 * 20, '\0'))), Exception);
}

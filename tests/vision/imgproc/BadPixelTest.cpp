#include "vision/imgproc/BadPixel.h"

#include "core/Exception.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

using namespace velmo::exp::vision;
using testing::HasSubstr;
using velmo::exp::Endian;
using velmo::exp::Exception;

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

/// Ten values that differ in both bytes, the extremes and -1 among them.
const BadPixel mg_oRecord = {{1, 2}, {{-1, 0x0304}, {32767, -32768}, {0x0506, 7}, {8, -9}}};
const Values mg_aRecord{1, 2, -1, 0x0304, 32767, -32768, 0x0506, 7, 8, -9};

class BadPixelFile : public testing::Test
{
protected:
    ~BadPixelFile() override { std::filesystem::remove(m_strPath); }

    std::vector<BadPixel> loaded(const std::string& bytes)
    {
        std::ofstream(m_strPath, std::ios::binary) << bytes;
        return BadPixelTools::loadBadPixelFromPxm(m_strPath);
    }

    const std::string m_strPath =
        (std::filesystem::temp_directory_path() / ("bad_pixels_" + std::to_string(getpid()))).string();
};

std::string pgm(int rows, int columns, const std::string& raster)
{
    return "P5 " + std::to_string(columns) + " " + std::to_string(rows) + " 65535\n" + raster;
}

} // namespace

TEST(BadPixel, TakesItsNeighboursWithoutLookingAtAFrame)
{
    BadPixel record;
    record.setStandardReplacePixel();
    EXPECT_EQ(valuesOf(record), (Values{0, 0, -1, 0, 1, 0, 0, -1, 0, 1}));
    record.pixel = {32767, -32768};
    record.setStandardReplacePixel();
    EXPECT_EQ(valuesOf(record),
              (Values{32767, -32768, 32766, -32768, -32768, -32768, 32767, 32767, 32767, -32767}));
}

TEST(BadPixel, IsTwentyBytesInEitherOrderAtAnyAddress)
{
    ASSERT_FALSE(velmo::exp::Endianness::isBigEndianSystem()); // the bytes below are a little-endian host's
    const std::string native = "\x01\0\x02\0\xff\xff\x04\x03\xff\x7f\0\x80\x06\x05\x07\0\x08\0\xf7\xff"s;
    const std::string swapped = "\0\x01\0\x02\xff\xff\x03\x04\x7f\xff\x80\0\x05\x06\0\x07\0\x08\xff\xf7"s;
    EXPECT_EQ(mg_oRecord.sizeofType(), 20U);
    for (const auto& [endian, bytes] :
         {std::pair(Endian::Native, native), {Endian::Swapped, swapped}, {static_cast<Endian>(7), native}}) {
        std::string buffer(23, '~');
        EXPECT_EQ(mg_oRecord.serialize(endian, buffer.data() + 1), 20U);
        EXPECT_EQ(buffer, "~" + bytes + "~~");

        BadPixel record;
        unsigned long size = 99;
        record.deserialize(endian, buffer.data() + 1, size);
        EXPECT_EQ(size, 20U);
        EXPECT_EQ(valuesOf(record), mg_aRecord);
        EXPECT_EQ(record, mg_oRecord);
        record.replacePixel[3].y = 9;
        EXPECT_NE(record, mg_oRecord);
    }
    EXPECT_EQ(valuesOf(BadPixel()), Values(10, 0));
}

TEST_F(BadPixelFile, HoldsARecordInEachRow)
{
    const cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat({mg_oRecord, {{3, 4}, {}}, mg_oRecord});
    ASSERT_EQ(image.type(), CV_16SC1);
    ASSERT_EQ(image.size(), cv::Size(10, 3));
    EXPECT_EQ(Values(image.ptr<short>(0), image.ptr<short>(0) + 10), mg_aRecord);
    EXPECT_EQ(Values(image.ptr<short>(1), image.ptr<short>(1) + 10), (Values{3, 4, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Values(image.ptr<short>(2), image.ptr<short>(2) + 10), mg_aRecord);

    const cv::Mat none = BadPixelTools::convertBadPixelToPxmFormat({});
    EXPECT_EQ(none.size(), cv::Size(10, 0));
    EXPECT_EQ(none.type(), CV_16SC1);
}

TEST_F(BadPixelFile, IsReadInItsOrder)
{
    const std::string first = "\0\x01\0\x02\xff\xff\x03\x04\x7f\xff\x80\0\x05\x06\0\x07\0\x08\xff\xf7"s;
    const std::string second(20, '\x01');
    const auto records = loaded(pgm(2, 10, first + second));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(valuesOf(records[0]), mg_aRecord);
    EXPECT_EQ(valuesOf(records[1]), Values(10, 257));
    // Columns beyond the tenth are nobody's.
    const auto wide = loaded(pgm(2, 11, first + "??" + second + "??"));
    ASSERT_EQ(wide.size(), 2U);
    EXPECT_EQ(valuesOf(wide[1]), Values(10, 257));
    EXPECT_EQ(valuesOf(loaded("P2 10 1 65535\n1 2 65535 772 32767 32768 1286 7 8 65527\n")[0]), mg_aRecord);
    EXPECT_TRUE(loaded(pgm(0, 10, "")).empty());
}

TEST_F(BadPixelFile, IsRefusedIfItHoldsNoRecords)
{
    try {
        BadPixelTools::loadBadPixelFromPxm(m_strPath);
        FAIL();
    } catch (const Exception& error) {
        EXPECT_STREQ(error.what(), "Can not open bad pixel file!");
        EXPECT_THAT(error.location(), HasSubstr(": loadBadPixelFromPxm(..)\n"));
    }
    EXPECT_THROW(loaded("no image"), Exception);
    EXPECT_THROW(loaded(pgm(1, 9, std::string(18, '\0'))), Exception);
    EXPECT_THROW(loaded(pgm(2, 10, std::string(20, '\0'))), Exception); // half of the raster
    EXPECT_THROW(loaded("P6 10 1 65535\n" + std::string(60, '\0')), Exception);
}

TEST_F(BadPixelFile, HoldsAtMost65535Records)
{
    std::vector<BadPixel> records(65535, mg_oRecord);
    records.back().pixel.x = 77;
    const cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat(records);
    EXPECT_EQ(image.rows, 65535);
    EXPECT_EQ(image.at<short>(65534, 0), 77);
    records.emplace_back();
    EXPECT_THROW(BadPixelTools::convertBadPixelToPxmFormat(records), Exception);

    EXPECT_EQ(loaded(pgm(65535, 10, std::string(65535 * 20, '\0'))).size(), 65535U);
    EXPECT_THROW(loaded(pgm(65536, 10, std::string(65536 * 20, '\0'))), Exception);
}

#include "apps/thermal/Progress.h"

#include "apps/thermal/Simulator.h"
#include "apps/thermal/Table.h"
#include "tests/Support.h"

using thermal::Table;

const auto printed = [](const Table& table, bool json, bool csv) {
    std::ostringstream text;
    table.print(text, {json, csv});
    return text.str();
};

TEST(Table, IsForPeopleAndForPrograms)
{
    Table table({{"stage", "stage", 0}, {"µs", "us", 1}});
    table.add({std::string("a \"quoted\", long one"), 1.25});
    table.add({std::string("b"), std::nan("")});
    table.add({std::string("c"), -INFINITY});
    table.add({std::string("d"), INFINITY});
    EXPECT_EQ(printed(table, false, false), "stage                    µs\n"
                                            "--------------------  -----\n"
                                            "a \"quoted\", long one    1.2\n"
                                            "b                         -\n"
                                            "c                     below\n"
                                            "d                     above\n");
    EXPECT_EQ(printed(table, true, false), "[\n  {\"stage\": \"a \\\"quoted\\\", long one\", \"us\": 1.25},\n"
                                           "  {\"stage\": \"b\", \"us\": null},\n"
                                           "  {\"stage\": \"c\", \"us\": \"below\"},\n"
                                           "  {\"stage\": \"d\", \"us\": \"above\"}\n]\n");
    EXPECT_EQ(printed(table, false, true),
              "stage,µs\n\"a \"\"quoted\"\", long one\",1.25\nb,\nc,below\nd,above\n");
}

TEST(Progress, FillsItsBar)
{
    EXPECT_EQ(thermal::progressBar(0, 8, 4), "[....] 0/8");
    EXPECT_EQ(thermal::progressBar(6, 8, 4), "[###.] 6/8");
    EXPECT_EQ(thermal::progressBar(9, 8, 4), "[####] 9/8");
}

TEST(Simulator, ShowsWhatItPromises)
{
    thermal::Simulator camera(1);
    velmo::camera::Frame frame;
    ASSERT_TRUE(camera.next(frame));
    EXPECT_GT(cv::countNonZero(frame == 65535), 0);             // the lamp saturates
    EXPECT_EQ(camera.deadPixels().front(), cv::Point(135, 96)); // with every compiler, on every machine
    EXPECT_EQ(camera.deadPixels().back(), cv::Point(212, 40));
    for (const cv::Point& pixel : camera.deadPixels())
        EXPECT_LT(frame(pixel), 20);
    // A wall at 21 degrees Celsius.
    EXPECT_NEAR(cv::mean(frame(cv::Rect(60, 80, 20, 40)))[0], 29415, 30);
    EXPECT_FALSE(camera.next(frame));
}

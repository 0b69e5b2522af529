#include "apps/thermal/NoiseTables.h"

#include "camera/colours/Range.h"

#include <limits>

namespace thermal {

using namespace velmo::camera;

namespace {

constexpr double dNone = std::numeric_limits<double>::quiet_NaN();

enum class Kind
{
    Difference, ///< of values; has no zero point
    Value,
    Share,
    Plain
};

struct Row
{
    const char* name;
    const char* key;
    double Judgement::*figure;
    Kind kind = Kind::Difference;
};

constexpr Row noiseRows[] = {
    {"temporal noise per pixel", "temporal", &Judgement::temporal},
    {"slow noise per pixel", "slow", &Judgement::slow},
    {"column stripes", "columns", &Judgement::columns},
    {"row stripes", "rows", &Judgement::rows},
    {"column stripes in time", "columns_in_time", &Judgement::columnsInTime},
    {"row stripes in time", "rows_in_time", &Judgement::rowsInTime},
    {"column stripes of both halves", "common_columns", &Judgement::commonColumns},
    {"row stripes of both halves", "common_rows", &Judgement::commonRows},
    {"fixed pattern per pixel", "pattern", &Judgement::pattern},
    {"drift of the level", "drift", &Judgement::drift},
    {"least value", "min", &Judgement::low, Kind::Value},
    {"greatest value", "max", &Judgement::high, Kind::Value},
    {"pixels unchanged (share)", "unchanged", &Judgement::unchanged, Kind::Share},
    {"  in a rounded running mean", "unchanged_mean", &Judgement::unchangedMean, Kind::Share},
};

constexpr Row filterRows[] = {
    {"noise of still pixels", "still", &Judgement::still},
    {"two parts, detail", "halves", &Judgement::halves},
    {"bias of the mean", "bias", &Judgement::bias},
    {"bias of 95 % of the frames", "bias_of_most", &Judgement::biasOfMost},
    {"slope of edges (share)", "edges", &Judgement::edges, Kind::Share},
    {"lag of what moves (frames)", "ghosting", &Judgement::ghosting, Kind::Plain},
    {"contrast of 15 counts (share)", "contrast_15", &Judgement::contrast15, Kind::Share},
    {"contrast of 30 counts", "contrast_30", &Judgement::contrast30, Kind::Share},
    {"contrast of 300 counts", "contrast_300", &Judgement::contrast300, Kind::Share},
    {"trail of 30 counts (share)", "trail_30", &Judgement::trail30, Kind::Plain},
    {"trail of 300 counts", "trail_300", &Judgement::trail300, Kind::Plain},
    {"still patch of 3 counts (share)", "patch", &Judgement::patch, Kind::Share},
    {"frames that look ahead (share)", "ahead", &Judgement::ahead, Kind::Plain},
};

double readingOf(const Row& row, const Judgement& figures, const NoiseReading& reading)
{
    const double figure = figures.*row.figure;
    return row.kind == Kind::Difference ? reading.difference(figure)
           : row.kind == Kind::Value    ? reading.value(figure)
                                        : figure;
}

std::string keyOf(const Row& row, const NoiseReading& reading)
{
    return row.key +
           (row.kind == Kind::Difference || row.kind == Kind::Value ? reading.key() : std::string());
}

double ratioOf(const Row& row, double before, double after, bool degrees)
{
    // None of two temperatures.
    const bool sensible = before > 0 && row.kind != Kind::Plain && !(row.kind == Kind::Value && degrees);
    return sensible ? after / before : dNone;
}

} // namespace

void NoiseReading::lookAt(const Frame& frame)
{
    std::vector<unsigned> histogram;
    m_u16Around = percentiles(frame, 50, 50, histogram).low;
}

std::string NoiseReading::unit() const
{
    return inDegrees() ? m_oThermometer.unit().substr(1) : "counts";
}

double NoiseReading::value(double counts) const
{
    return m_oThermometer.rounded(m_oThermometer.read(cv::saturate_cast<unsigned short>(counts)));
}

double NoiseReading::difference(double counts) const
{
    return m_oThermometer.rounded(m_oThermometer.readDifference(counts, m_u16Around));
}

Table measured(const NoiseFigures& figures, const NoiseReading& reading)
{
    Table table({{"measure (" + reading.unit() + ")", "measure"},
                 {"key", "key"},
                 {"value", "value", reading.decimals()}});
    Judgement all;
    static_cast<NoiseFigures&>(all) = figures;
    for (const Row& row : noiseRows)
        table.add({std::string(row.name), keyOf(row, reading), readingOf(row, all, reading)});
    table.add({std::string("frames"), std::string("frames"), static_cast<double>(figures.frames)});
    return table;
}

Table compared(const std::vector<Judged>& columns, const NoiseReading& reading)
{
    std::vector<Table::Column> headings{{"measure (" + reading.unit() + ")", "measure"}, {"key", "key"}};
    for (const Judged& column : columns)
        headings.push_back({column.name, column.name, reading.decimals()});
    if (columns.size() == 2)
        headings.push_back({"after/before", "ratio", 2});
    Table table(headings);
    const auto add = [&](const Row& row) {
        std::vector<Table::Cell> cells{std::string(row.name), keyOf(row, reading)};
        std::vector<double> values;
        for (const Judged& column : columns) {
            values.push_back(readingOf(row, column.figures, reading));
            cells.emplace_back(values.back());
        }
        if (columns.size() == 2)
            cells.emplace_back(ratioOf(row, values[0], values[1], reading.inDegrees()));
        table.add(std::move(cells));
    };
    for (const Row& row : noiseRows)
        add(row);
    for (const Row& row : filterRows)
        add(row);
    return table;
}

} // namespace thermal

#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/FrameCsv.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "camera/measures/Course.h"
#include "camera/measures/ShapeMeter.h"
#include "camera/measures/ShapePicture.h"

#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

/// The options that name shapes, which are measured in the order in which they were typed.
class ShapeOptions
{
public:
    void addTo(const Command& command)
    {
        m_oCommand = command;
        add(Shape::Kind::Spot, "--spot", "X,Y[:R]",
            "A pixel: column X, row Y, from 0; with R all pixels that are no farther away");
        add(Shape::Kind::Box, "--box", "X,Y,W,H", "W columns from X on, H rows from Y on");
        add(Shape::Kind::Line, "--line", "X1,Y1,X2,Y2", "The pixels on a line, both ends");
        add(Shape::Kind::Polygon, "--polygon", "X1,Y1,X2,Y2,...", "What corners enclose, and its edge");
        command.flag("--whole", m_bWhole, "The whole frame; also without any other shape");
        m_mapKinds["--whole"] = Shape::Kind::Whole;
    }

    std::vector<Shape> shapes() const
    {
        std::vector<Shape> shapes;
        for (const auto& [option, value] : m_oCommand->typed())
            if (const auto kind = m_mapKinds.find(option); kind != m_mapKinds.end())
                shapes.push_back(Shape::parse(kind->second, value));
        if (shapes.empty())
            shapes.push_back(Shape::parse(Shape::Kind::Whole, ""));
        return shapes;
    }

private:
    void add(Shape::Kind kind, const char* name, const char* form, const char* help)
    {
        const std::string description = std::string(help) + "; may be repeated";
        m_oCommand->option(name, m_vecTexts, description).form(form).repeated();
        m_mapKinds[name] = kind;
    }

    std::optional<Command> m_oCommand;
    std::map<std::string, Shape::Kind> m_mapKinds;
    bool m_bWhole = false;               // this and the next are only for the parser,
    std::vector<std::string> m_vecTexts; // which does not tell the order in which it fills them
};

struct MeasureOptions
{
    InputOptions input;
    ShapeOptions shapes;
    SettingsOptions settings;
    TableFormat format;
    std::vector<std::string> deltas;
    int bins = 0; ///< of the histogram; 0: none
    std::string plot;
    std::string csvFrames;
    std::string overlay;
    double fps = 9;
    std::optional<Option> givenFps;
};

/// One row per shape and frame, and one per difference.
class FiguresTable
{
public:
    explicit FiguresTable(const Thermometer& thermometer)
        : m_oThermometer(thermometer), m_oTable(columns(thermometer))
    {}

    void add(std::size_t frame, const ShapeMeter& meter)
    {
        const auto number = static_cast<double>(frame);
        for (const ShapeMeter::Entry& entry : meter.entries()) {
            const Figures& of = entry.figures;
            m_oTable.add({number, entry.name, static_cast<double>(of.pixels), static_cast<double>(of.without),
                          read(of.low), double(of.lowAt.x), double(of.lowAt.y), read(of.mean), read(of.high),
                          double(of.highAt.x), double(of.highAt.y), read(of.deviation), read(of.p5),
                          read(of.p50), read(of.p95)});
        }
        constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
        for (const ShapeMeter::Delta& delta : meter.deltas())
            m_oTable.add({number, delta.name, dNone, dNone, dNone, dNone, dNone, read(delta.difference),
                          dNone, dNone, dNone, dNone, dNone, dNone, dNone});
    }

    const Table& table() const { return m_oTable; }

private:
    static std::vector<Table::Column> columns(const Thermometer& thermometer)
    {
        const int decimals = thermometer.hasDegrees() ? 2 : 0;
        const int finer = decimals + 1; // of what is worked out of many pixels
        const auto value = [&](const std::string& name, int digits) {
            return Table::Column{name + thermometer.unit(), name + thermometer.key(), digits};
        };
        return {{"frame", "frame"},     {"shape", "shape"},     {"pixels", "pixels"},
                {"without", "without"}, value("min", decimals), {"min x", "min_x"},
                {"min y", "min_y"},     value("mean", finer),   value("max", decimals),
                {"max x", "max_x"},     {"max y", "max_y"},     value("deviation", finer),
                value("p5", decimals),  value("p50", decimals), value("p95", decimals)};
    }

    double read(double number) const { return m_oThermometer.rounded(number); }

    Thermometer m_oThermometer;
    Table m_oTable;
};

/// Of all frames together.
Table histogramTable(const ShapeMeter& meter, int bins)
{
    const Thermometer& thermometer = meter.thermometer();
    const int decimals = thermometer.hasDegrees() ? 2 : 1;
    Table table({{"shape", "shape"},
                 {"from" + thermometer.unit(), "from" + thermometer.key(), decimals},
                 {"to" + thermometer.unit(), "to" + thermometer.key(), decimals},
                 {"pixels", "pixels"}});
    for (std::size_t i = 0; i < meter.entries().size(); ++i)
        for (const HistogramBin& bin : histogramOf(meter.counts()[i], thermometer, bins))
            table.add({meter.entries()[i].name, thermometer.rounded(bin.from), thermometer.rounded(bin.to),
                       static_cast<double>(bin.pixels)});
    return table;
}

/// Pictures of the frames with the shapes over them.
class Overlay
{
public:
    Overlay(const Settings& settings, std::unique_ptr<ImageWriter> sink)
        : m_pSink(std::move(sink)), m_s32Scale(static_cast<int>(settings.numbers("picture/scale")[0]))
    {}

    void add(Camera& camera, const Frame& frame, const ShapeMeter& meter)
    {
        camera.paint(frame).copyTo(m_oPicture);
        Picture besideTheLegend = m_oPicture(cv::Rect({}, frame.size() * m_s32Scale));
        drawShapes(besideTheLegend, meter, m_s32Scale);
        m_pSink->write(m_oPicture);
    }

    void finish() { m_pSink->finish(); }

private:
    std::unique_ptr<ImageWriter> m_pSink;
    int m_s32Scale;
    Picture m_oPicture;
};

ShapeMeter meterOf(const MeasureOptions& options, const Thermometer& thermometer)
{
    ShapeMeter meter(thermometer, options.bins > 0);
    for (Shape& shape : options.shapes.shapes())
        meter.add(std::move(shape));
    for (const std::string& delta : options.deltas)
        meter.addDelta(delta);
    return meter;
}

void measure(const MeasureOptions& options)
{
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    if (settings.text("colours/range") == "lock")
        throw UsageError("--range: 'lock' is not for measure; give MIN:MAX for steady colours");
    const auto source = options.input.open(outputs, settings);
    Camera camera = openCamera(settings, outputs, *source);
    ShapeMeter meter = meterOf(options, camera.thermometer());
    FiguresTable figures(camera.thermometer());
    Course course;
    std::optional<FrameCsv> csv;
    if (!options.csvFrames.empty())
        csv.emplace(outputs, options.csvFrames, camera.thermometer());
    std::optional<Overlay> overlay;
    if (!options.overlay.empty())
        overlay.emplace(settings, openSink(outputs, options.overlay, source->count(), options.fps));

    std::size_t index = 0;
    forEachFrame(*source, options.input.quiet, [&](const Frame& raw) {
        const Frame& frame = camera.clean(raw);
        meter.measure(frame);
        figures.add(index++, meter);
        course.add(meter);
        if (csv)
            csv->write(frame);
        if (overlay)
            overlay->add(camera, frame, meter);
    });
    if (overlay)
        overlay->finish();
    const bool timed = options.givenFps->given();
    if (!options.plot.empty())
        writePicture(outputs, options.plot,
                     course.draw(meter, timed ? std::optional(options.fps) : std::nullopt));
    outputs.commit();

    Tables tables = {{"figures", figures.table()}};
    if (options.bins > 0)
        tables.emplace_back("histogram", histogramTable(meter, options.bins));
    printTables(std::cout, tables, options.format);
}

} // namespace

void addMeasureCommand(const Command& program)
{
    auto options = std::make_shared<MeasureOptions>();
    const Command command =
        program.sub("measure", "Measures spots, boxes, lines, polygons or whole frames, frame by frame");
    options->input.addTo(command);
    options->shapes.addTo(command);
    command.option("--delta", options->deltas, "The mean of one shape less that of another; may be repeated")
        .repeated()
        .form("box1-box2");
    command.option("--histogram", options->bins, "How many pixels of all frames lie in each of BINS steps")
        .between(1, 65536)
        .form("BINS");
    command.option("--plot", options->plot, "Draw how the means go over time into this .png").form("PATH");
    command.option("--csv-frames", options->csvFrames, "A folder for whole frames as comma-separated values")
        .form("FOLDER");
    command
        .option("--overlay", options->overlay,
                "Pictures with the shapes over them: a .png for one, a film, or a folder")
        .form("PATH");
    options->givenFps = addFps(command, options->fps);
    options->settings.addTo(command, {"temperature", "pixels", "noise", "frame", "colours", "picture"});
    options->format.addTo(command);
    command.run([options] { measure(*options); });
}

} // namespace thermal

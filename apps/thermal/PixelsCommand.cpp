#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/PixelsCommands.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "apps/thermal/Terminal.h"
#include "camera/pixels/PixelDetection.h"
#include "camera/pixels/PixelOverlay.h"
#include "camera/pixels/Replacements.h"
#include "camera/settings/Parse.h"
#include "recordings/Outputs.h"
#include "recordings/PixelFiles.h"
#include "recordings/PngFile.h"

#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

using velmo::exp::vision::BadPixel;
using velmo::exp::vision::BadPixelTools;
using velmo::exp::vision::Pixel;

constexpr int s32Most = std::numeric_limits<int>::max();

struct DetectOptions
{
    InputOptions input;
    SettingsOptions settings;
    std::string out;
    int minCount = 0; ///< 0: not by spread
    int offset = 0;
    std::string rowsColumns;
    bool monotony = false;
    std::vector<std::string> netd; ///< FRAMES1 T1 FRAMES2 T2
    std::string netdTolerances = "0.5:1:1";
    bool force = false;
    TableFormat format;
};

/// The numbers of an option, all from 0 up.
std::vector<double> numbersOf(const std::string& text, const std::string& option,
                              const std::vector<const char*>& names)
{
    Form form;
    for (const char* const name : names)
        form.push_back({name, Field::Kind::Number, 0, s32Most});
    return parseForm(text, option, form);
}

/// What a NETD measurement takes from the command line, and the two series.
struct NetdRequest
{
    NetdRequest(const DetectOptions& options, Outputs& outputs)
        : firstTemperature(parseNumber(options.netd[1], "--netd temperature", -1000, 10000)),
          secondTemperature(parseNumber(options.netd[3], "--netd temperature", -1000, 10000)),
          first(openSeries(options, options.netd[0], outputs)),
          second(openSeries(options, options.netd[2], outputs))
    {
        const auto factors =
            numbersOf(options.netdTolerances, "--netd-tolerance", {"RESPONSIVITY", "NOISE", "NETD"});
        tolerances = {factors[0], factors[1], factors[2]};
    }

    static std::unique_ptr<FrameSource> openSeries(const DetectOptions& options, const std::string& frames,
                                                   Outputs& outputs)
    {
        InputOptions input = options.input;
        input.inputs = {frames};
        return input.open(outputs, options.settings.settings(outputs));
    }

    double firstTemperature;
    double secondTemperature;
    std::unique_ptr<FrameSource> first;
    std::unique_ptr<FrameSource> second;
    NetdTolerances tolerances;
};

StillSeries readStill(FrameSource& source, bool quiet)
{
    StillSeries series;
    forEachFrame(source, quiet, [&](const Frame& frame) { series.add(frame); });
    return series;
}

/// The frame behind the overlay, and the map so far.
struct Found
{
    Frame frame;
    PixelMap map;
};

Table detectByNetd(const NetdRequest& request, bool quiet, Found& found)
{
    const StillSeries first = readStill(*request.first, quiet);
    const StillSeries second = readStill(*request.second, quiet);
    if (found.map.empty()) {
        found.map = PixelMap(first.size(), 0);
        first.mean().convertTo(found.frame, CV_16U);
    }
    const auto results = checkNetd(first, request.firstTemperature, second, request.secondTemperature,
                                   request.tolerances, found.map);
    Table table(
        {{"mean responsivity", "responsivity", 3}, {"mean noise", "noise", 3}, {"mean NETD", "netd", 4}});
    table.add({results.dMeanResponsivity, results.dMeanNoise, results.dMeanNetd});
    return table;
}

/// Rows and columns last: they count what the others found.
void detectLines(const std::vector<double>& limits, PixelMap& map)
{
    BadPixelTools::detectBadRowsAndColumns(map, static_cast<unsigned>(limits[0]),
                                           static_cast<unsigned>(limits[1]));
}

Table countsOf(const PixelMap& map)
{
    Table table({{"reason", "reason"}, {"flag", "flag"}, {"pixels", "pixels"}, {"percent", "percent", 3}});
    const auto add = [&](const std::string& name, double flag, const PixelMap& flagged) {
        const double count = cv::countNonZero(flagged);
        table.add({name, flag, count, 100 * count / static_cast<double>(map.total())});
    };
    for (const PixelReason& reason : pixelReasons())
        add(reason.name, reason.flag, PixelMap(map & static_cast<int>(reason.flag)));
    add("any", std::nan(""), map);
    return table;
}

void checkRequest(const DetectOptions& options)
{
    if (std::filesystem::path(options.out).extension() != ".pgm")
        throw UsageError("'" + options.out + "': the map goes to a .pgm; a .csv and a .png join it");
    const bool byFrames = options.minCount > 0 || options.monotony;
    if (!byFrames && options.netd.empty())
        throw UsageError("pixels detect: say how: --spread, --monotony or --netd");
    if (byFrames && options.input.inputs.empty())
        throw UsageError("pixels detect: --spread and --monotony need an INPUT");
    if (!byFrames && !options.input.inputs.empty())
        throw UsageError("pixels detect: INPUT is for --spread and --monotony");
}

Found detectByFrames(FrameSource& source, const DetectOptions& options)
{
    PixelDetection detection(static_cast<std::size_t>(options.minCount), options.monotony, options.offset);
    forEachFrame(source, options.input.quiet, [&](const Frame& frame) { detection.add(frame); });
    if (options.monotony && detection.frames() < 2)
        throw UsageError(source.name() + ": --monotony needs at least two frames");
    return {detection.first(), detection.map()};
}

/// The file that joins the map.
std::string besideMap(const DetectOptions& options, const char* ending)
{
    return std::filesystem::path(options.out).replace_extension(ending).string();
}

void detect(const DetectOptions& options)
{
    checkRequest(options);
    std::vector<double> lineLimits;
    if (!options.rowsColumns.empty())
        lineLimits = numbersOf(options.rowsColumns, "--rows-columns", {"COLUMN", "ROW"});

    Outputs outputs(options.force);
    std::unique_ptr<FrameSource> frames;
    if (!options.input.inputs.empty())
        frames = options.input.open(outputs, options.settings.settings(outputs));
    std::optional<NetdRequest> netd;
    if (!options.netd.empty())
        netd.emplace(options, outputs);
    OutputFile map = outputs.file(options.out);
    OutputFile list = outputs.companion(besideMap(options, ".csv"));
    OutputFile picture = outputs.companion(besideMap(options, ".png"));

    Found found;
    Tables tables;
    if (frames)
        found = detectByFrames(*frames, options);
    if (netd)
        tables.emplace_back("netd", detectByNetd(*netd, options.input.quiet, found));
    if (!lineLimits.empty())
        detectLines(lineLimits, found.map);
    tables.emplace_back("pixels", countsOf(found.map));

    writePixelMap(std::move(map), found.map);
    list.write(pixelList(found.map));
    list.finish();
    writePng(std::move(picture), drawBadPixels(found.frame, found.map));
    outputs.commit();
    printTables(std::cout, tables, options.format);
}

void addDetect(const Command& pixels)
{
    auto options = std::make_shared<DetectOptions>();
    const Command command =
        pixels.sub("detect", "Runs a detector of your choice and writes a map; 'find' needs no choice");
    options->input.addTo(command).required(false); // --netd names its own
    options->settings.addTo(command, {"temperature/unit"});
    command
        .option("--out", options->out,
                "The map, a .pgm of flags; a .csv with every pixel and its reasons and a .png join it")
        .required()
        .form("MAP");
    command
        .option("--spread", options->minCount,
                "Values outside the core of the histogram, whose bins (2 % of the mean) hold MINCOUNT "
                "pixels or more; in every frame of the input")
        .between(1, s32Most)
        .form("MINCOUNT");
    command
        .option("--offset", options->offset,
                "Take this off every value of the input first: the bins become 2 % of what is left, which "
                "suits values far from zero, such as hundredths of a kelvin")
        .between(0, 65535)
        .showDefault()
        .form("N");
    command
        .option("--rows-columns", options->rowsColumns,
                "Whole columns and rows with more bad pixels than these limits")
        .form("COLUMN:ROW");
    command.flag("--monotony", options->monotony,
                 "Values that do not rise from each frame to the next; the input is in order of temperature");
    command
        .option("--netd", options->netd,
                "Odd responsivity, noise or NETD between two series, each of a uniform target at one "
                "temperature")
        .values(4)
        .form("FRAMES1 T1 FRAMES2 T2");
    command
        .option("--netd-tolerance", options->netdTolerances,
                "How far from the means is good, relative to them")
        .showDefault()
        .form("RESPONSIVITY:NOISE:NETD");
    addForce(command, options->force);
    options->format.addTo(command);
    command.run([options] { detect(*options); });
}

struct RecordsOptions
{
    std::string map;
    std::string out;
    int radius = static_cast<int>(u32UsualRadius);
    TableFormat format;
};

void makeRecords(const RecordsOptions& options)
{
    Outputs outputs;
    outputs.protect({options.map});
    const Replacements replacements =
        replacementsOf(readAnyMap(options.map), static_cast<unsigned>(options.radius));
    writeRecords(outputs.file(options.out), replacements.records);
    outputs.commit();
    std::cout << replacements.records.size() << " records in " << forTerminal(options.out) << '\n';
    if (!replacements.widened.empty())
        std::cout << "No good pixel within " << options.radius << " of these; up to " << replacements.widest
                  << " away was searched for them:\n";
    for (const cv::Point& pixel : replacements.widened)
        std::cout << "  " << pixel.x << ',' << pixel.y << '\n';
}

void addRecords(const Command& pixels)
{
    auto options = std::make_shared<RecordsOptions>();
    const Command command =
        pixels.sub("records", "Finds the pixels that replace those of a map, four for each");
    command.option("MAP", options->map, "A map, as find writes it; 0 is a good pixel").required();
    command
        .option("--radius", options->radius,
                "How far to look for good pixels; further only for what has none there")
        .showDefault()
        .between(1, s32Most)
        .form("N");
    command.option("--out", options->out, "The records, a .pgm for render --bad-pixels")
        .required()
        .form("FILE");
    command.run([options] { makeRecords(*options); });
}

std::string positionText(Pixel pixel)
{
    return std::to_string(pixel.x) + "," + std::to_string(pixel.y);
}

void showRecords(const RecordsOptions& options)
{
    Table table({{"x", "x"},
                 {"y", "y"},
                 {"right", "right"},
                 {"below", "below"},
                 {"above", "above"},
                 {"left", "left"}});
    for (const BadPixel& record : readRecords(options.map)) {
        std::vector<Table::Cell> row{double(record.pixel.x), double(record.pixel.y)};
        for (const Pixel& good : record.replacePixel)
            row.emplace_back(positionText(good));
        table.add(row);
    }
    table.print(std::cout, options.format);
}

void addShow(const Command& pixels)
{
    auto options = std::make_shared<RecordsOptions>();
    const Command command = pixels.sub("show", "Prints records: each bad pixel and what replaces it");
    command.option("FILE", options->map, "Records, as the command of that name writes them").required();
    options->format.addTo(command);
    command.run([options] { showRecords(*options); });
}

} // namespace

void addPixelsCommand(const Command& program)
{
    const Command command = program.sub("pixels", "Finds bad pixels and what replaces them");
    command.requireSub();
    addPixelsFind(command);
    addPixelsMaps(command);
    addDetect(command);
    addRecords(command);
    addShow(command);
}

} // namespace thermal

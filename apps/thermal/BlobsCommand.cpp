#include "apps/thermal/ColourOptions.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/Table.h"
#include "camera/colours/Range.h"
#include "camera/measures/BlobPicture.h"
#include "camera/measures/BlobTracker.h"
#include "camera/measures/Blobs.h"
#include "camera/settings/Parse.h"

#include <CLI/App.hpp>

#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct BlobsOptions
{
    InputOptions input;
    std::string above;
    std::string below;
    OutputOptions output;
    ColourOptions colours;
    std::string range = "auto";
    TableFormat format;
    int minSize = 4;
    bool celsius = false;
};

double fromCelsius(double degrees)
{
    // To a thousandth of a count: 30 degrees are 30315, not a rounding error less.
    return std::round((degrees + 273.15) * 100000) / 1000;
}

double toCelsius(double value)
{
    return value * 0.01 - 273.15;
}

BlobRule ruleOf(const BlobsOptions& options)
{
    if (options.above.empty() && options.below.empty())
        throw UsageError("blobs needs --above VALUE or --below VALUE");
    const bool above = options.below.empty();
    const std::string& text = above ? options.above : options.below;
    const std::string what = above ? "--above" : "--below";
    const double value = options.celsius
                             ? fromCelsius(parseNumber(text, what, toCelsius(0), toCelsius(65535)))
                             : parseNumber(text, what, 0, 65535);
    return {value, above, static_cast<std::size_t>(options.minSize)};
}

/// One row per blob and frame.
class BlobTable
{
public:
    explicit BlobTable(bool celsius) : m_bCelsius(celsius), m_oTable(columns(celsius)) {}

    void add(std::size_t frame, const Blob& blob)
    {
        m_oTable.add({static_cast<double>(frame), static_cast<double>(blob.component.getLabel()),
                      static_cast<double>(blob.component.getNrOfPoints()), blob.centre.x, blob.centre.y,
                      static_cast<double>(blob.box.x), static_cast<double>(blob.box.y),
                      static_cast<double>(blob.box.width), static_cast<double>(blob.box.height),
                      blob.elongation, blob.length, blob.width, blob.angle, shown(blob.low), shown(blob.mean),
                      shown(blob.high)});
    }

    void print(const TableFormat& format) const { m_oTable.print(std::cout, format); }

private:
    static std::vector<Table::Column> columns(bool celsius)
    {
        const std::string unit = celsius ? " °C" : "", keyUnit = celsius ? "_celsius" : "";
        const int decimals = celsius ? 2 : 0;
        return {{"frame", "frame"},
                {"label", "label"},
                {"pixels", "pixels"},
                {"x", "x", 1},
                {"y", "y", 1},
                {"box x", "box_x"},
                {"box y", "box_y"},
                {"box w", "box_width"},
                {"box h", "box_height"},
                {"elongation", "elongation", 3},
                {"length", "length", 1},
                {"width", "width", 1},
                {"angle", "angle", 0},
                {"min" + unit, "min" + keyUnit, decimals},
                {"mean" + unit, "mean" + keyUnit, celsius ? 2 : 1},
                {"max" + unit, "max" + keyUnit, decimals}};
    }

    double shown(double value) const { return m_bCelsius ? toCelsius(value) : value; }

    bool m_bCelsius;
    Table m_oTable;
};

void showBlobs(const BlobsOptions& options)
{
    const BlobRule rule = ruleOf(options);
    const RangeRule range = RangeRule::parse(options.range, "--range");
    if (range.locks())
        throw UsageError("--range: 'lock' is not for blobs; give MIN:MAX for steady colours");
    Colouring colouring = makeColouring(options.colours);
    const auto source = options.input.open();
    const auto sink = options.output.open(*source);
    BlobTracker tracker;
    BlobTable table(options.celsius);
    std::size_t index = 0;
    forEachFrame(*source, options.input.quiet, [&](Frame& frame) {
        std::vector<Blob> blobs = findBlobs(frame, rule);
        tracker.label(blobs);
        for (const Blob& blob : blobs)
            table.add(index, blob);
        sink->write(withBlobs(colouring.paint(frame, range.of(frame)), blobs, tracker, options.output.scale));
        ++index;
    });
    sink->finish();
    table.print(options.format);
}

} // namespace

void addBlobsCommand(CLI::App& program)
{
    auto options = std::make_shared<BlobsOptions>();
    CLI::App& command =
        *program.add_subcommand("blobs", "Finds warm or cold things, measures and follows them");
    options->input.addTo(command);
    auto* above = command.add_option("--above", options->above, "Blobs are of values above this one")
                      ->type_name("VALUE");
    command.add_option("--below", options->below, "Blobs are of values below this one")
        ->excludes(above)
        ->type_name("VALUE");
    command.add_flag("--celsius", options->celsius,
                     "Values are hundredths of a kelvin: VALUE and table in degrees Celsius");
    command.add_option("--min-size", options->minSize, "Leave out blobs of fewer pixels")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str()
        ->type_name("N");
    options->output.addTo(command);
    command
        .add_option("--range", options->range,
                    "Values at the ends of the palette: auto (each frame's own), MIN:MAX, or percentiles "
                    "like p1:p99")
        ->capture_default_str()
        ->type_name("RANGE");
    options->colours.usual = "Grayscale"; // so that the marks are what is coloured
    options->colours.addTo(command);
    options->format.addTo(command);
    command.callback([options] { showBlobs(*options); });
}

} // namespace thermal

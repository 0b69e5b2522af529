#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"

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
    SettingsOptions settings;
    OutputOptions output;
    TableFormat format;
};

/// One row per blob and frame.
class BlobTable
{
public:
    explicit BlobTable(const Thermometer& thermometer)
        : m_oThermometer(thermometer), m_oTable(columns(thermometer))
    {}

    void add(std::size_t frame, const Blob& blob)
    {
        m_oTable.add({static_cast<double>(frame), static_cast<double>(blob.component.getLabel()),
                      static_cast<double>(blob.component.getNrOfPoints()), blob.centre.x, blob.centre.y,
                      static_cast<double>(blob.box.x), static_cast<double>(blob.box.y),
                      static_cast<double>(blob.box.width), static_cast<double>(blob.box.height),
                      blob.elongation, blob.length, blob.width, blob.angle, read(blob.low),
                      m_oThermometer.rounded(blob.mean), read(blob.high)});
    }

    void print(const TableFormat& format) const { m_oTable.print(std::cout, format); }

private:
    static std::vector<Table::Column> columns(const Thermometer& thermometer)
    {
        const std::string unit = thermometer.unit(), keyUnit = thermometer.key();
        const int decimals = thermometer.hasDegrees() ? 2 : 0;
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
                {"mean" + unit, "mean" + keyUnit, thermometer.hasDegrees() ? 2 : 1},
                {"max" + unit, "max" + keyUnit, decimals}};
    }

    double read(unsigned short value) const { return m_oThermometer.rounded(m_oThermometer.read(value)); }

    Thermometer m_oThermometer;
    Table m_oTable;
};

/// What is chosen for blobs: without another palette the frame is grey, so that the marks are what is
/// coloured.
Settings blobSettings(const BlobsOptions& options, Outputs& outputs)
{
    Settings settings = options.settings.settings(outputs);
    if (settings.text("blobs/above") == "off" && settings.text("blobs/below") == "off")
        throw UsageError("blobs needs --above VALUE or --below VALUE");
    if (settings.text("colours/range") == "lock")
        throw UsageError("--range: 'lock' is not for blobs; give MIN:MAX for steady colours");
    const bool chosen = settings.text("colours/palette-file") + settings.text("colours/palette") != "auto";
    if (!chosen && settings.text("colours/humidity") == "off" && settings.text("colours/insulation") == "off")
        settings.set("colours/palette", "Grayscale");
    return settings;
}

void showBlobs(const BlobsOptions& options)
{
    Outputs outputs;
    const Settings settings = blobSettings(options, outputs);
    const auto source = options.input.open(outputs, settings);
    Camera camera = openCamera(settings, outputs, *source);
    const auto sink = options.output.open(outputs, *source);
    BlobTable table(camera.thermometer());
    std::size_t index = 0;
    forEachFrame(*source, options.input.quiet, [&](const Frame& raw) {
        const Frame& frame = camera.clean(raw);
        for (const Blob& blob : camera.measure(frame).blobs)
            table.add(index, blob);
        sink->write(camera.paint(frame));
        ++index;
    });
    sink->finish();
    outputs.commit();
    table.print(options.format);
}

} // namespace

void addBlobsCommand(const Command& program)
{
    auto options = std::make_shared<BlobsOptions>();
    const Command command = program.sub("blobs", "Finds warm or cold things, measures and follows them");
    options->input.addTo(command);
    options->output.addTo(command);
    options->settings.addTo(command,
                            {"blobs", "temperature", "pixels", "noise", "frame", "colours", "picture"});
    options->format.addTo(command);
    command.run([options] { showBlobs(*options); });
}

} // namespace thermal

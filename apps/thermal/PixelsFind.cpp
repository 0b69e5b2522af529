#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/PixelsCommands.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "apps/thermal/Terminal.h"
#include "camera/pixels/PixelOverlay.h"
#include "camera/pixels/PixelSearch.h"
#include "recordings/PixelFiles.h"
#include "recordings/PngFile.h"

#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct FindOptions
{
    InputOptions input;
    std::vector<std::string> shutter;
    std::string out;
    bool force = false;
    SettingsOptions settings; ///< of what the frames count in
    TableFormat format;
};

/// The mean of the frames of the closed shutter; empty without them.
Frame readShutter(const FindOptions& options, Outputs& outputs)
{
    if (options.shutter.empty())
        return {};
    InputOptions input = options.input;
    input.inputs = options.shutter;
    const auto source = input.open(outputs, options.settings.settings(outputs));
    cv::Mat_<double> sum;
    double count = 0;
    forEachFrame(*source, options.input.quiet, [&](const Frame& frame) {
        cv::Mat_<double> values;
        frame.convertTo(values, CV_64F);
        if (!sum.empty() && sum.size() != values.size())
            throw UsageError("--shutter: its frames are of different sizes");
        sum = sum.empty() ? values : cv::Mat_<double>(sum + values);
        ++count;
    });
    Frame mean;
    sum.convertTo(mean, CV_16U, 1 / count);
    return mean;
}

Table summaryOf(const PixelFindings& findings)
{
    Table table({{"reason", "reason"}, {"pixels", "pixels"}, {"percent", "percent", 3}});
    const auto add = [&](const std::string& name, const cv::Mat& where) {
        const double count = cv::countNonZero(where);
        table.add({name, count, 100 * count / static_cast<double>(where.total())});
    };
    for (const PixelReason& reason : pixelFaults())
        add(reason.name, findings.faults & static_cast<int>(reason.flag));
    add("any", findings.faults);
    return table;
}

Table listOf(const PixelFindings& findings)
{
    Table table({{"x", "x"},
                 {"y", "y"},
                 {"reasons", "reasons"},
                 {"deviations", "deviations", 1},
                 {"cluster", "cluster"}});
    for (int y = 0; y < findings.faults.rows; ++y)
        for (int x = 0; x < findings.faults.cols; ++x)
            if (findings.faults(y, x) != 0)
                table.add({double(x), double(y), reasonsOf(findings.faults(y, x), pixelFaults()),
                           std::round(10.0 * findings.deviations(y, x)) / 10,
                           double(findings.clusters(y, x))});
    return table;
}

void find(const FindOptions& options)
{
    const std::filesystem::path out = options.out;
    if (out.extension() != ".pgm")
        throw UsageError("'" + options.out + "': the map goes to a .pgm; a .csv and a .png join it");
    Outputs outputs(options.force);
    const auto source = options.input.open(outputs, options.settings.settings(outputs));
    PixelSearch search(readShutter(options, outputs));
    OutputFile map = outputs.file(options.out);
    OutputFile list = outputs.companion(std::filesystem::path(out).replace_extension(".csv").string());
    OutputFile picture = outputs.companion(std::filesystem::path(out).replace_extension(".png").string());

    forEachFrame(*source, options.input.quiet, [&](const Frame& frame) { search.add(frame); });
    const PixelFindings findings = search.find();
    const bool forPrograms = options.format.json || options.format.csv;
    (forPrograms ? listOf(findings) : summaryOf(findings)).print(std::cout, options.format);
    if (const std::string name = findings.overshot(); !name.empty()) {
        const std::string doubt =
            std::to_string(findings.count()) + " of " + std::to_string(findings.faults.total()) +
            " pixels are flagged, most of them as " + name + ": more than 5 % is rarely true";
        if (!options.force)
            throw DoubtfulResult(doubt + "; --force writes the map all the same");
        std::cerr << complaint(doubt) << std::flush;
    }
    writePixelMap(std::move(map), findings.map());
    list.write(findings.list());
    list.finish();
    writePng(std::move(picture), drawBadPixels(search.mean(), findings.faults, pixelFaults()));
    outputs.commit();
    if (!forPrograms && findings.frames < 5)
        std::cout
            << "\nNoise and response were not judged: they take 5 frames, better 40 in which things move.\n";
}

} // namespace

void addPixelsFind(const Command& pixels)
{
    auto options = std::make_shared<FindOptions>();
    const Command command = pixels.sub(
        "find",
        "Finds defective pixels in a recording of anything, each with its reasons, without a choice to make");
    options->input.addTo(command);
    options->settings.addTo(command, {"temperature/unit"});
    command
        .option(
            "--shutter", options->shutter,
            "Frames of the closed shutter, for raw frames that were never corrected: their mean is taken off")
        .form("FILE");
    command
        .option(
            "--out", options->out,
            "The map, a .pgm of flags for --bad-pixels; a .csv with every pixel and its reasons and a .png "
            "join it")
        .required()
        .form("MAP");
    command.flag("--force", options->force,
                 "Write the map even if more than 5 % is flagged, and replace files that join --out");
    options->format.addTo(command);
    command.run([options] { find(*options); });
}

} // namespace thermal

#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "camera/measures/Statistics.h"
#include "camera/pixels/FlatField.h"
#include "recordings/FileList.h"
#include "recordings/FlatFile.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct FlatOptions
{
    InputOptions input;
    std::vector<std::string> other;
    std::string out;
    SettingsOptions settings; ///< of what the frames count in
    TableFormat format;
};

Table summaryOf(const FlatField& field, bool hasGains)
{
    cv::Mat_<double> offsets, gains;
    field.shutter.convertTo(offsets, CV_64F);
    field.gains.convertTo(gains, CV_64F, 100);
    Table table({{"measure", "measure"}, {"key", "key"}, {"value", "value", 2}});
    table.add({std::string("level of the shutter (counts)"), std::string("level"), double{field.level()}});
    table.add(
        {std::string("spread of the offsets (counts)"), std::string("offsets"), robustDeviation(offsets)});
    if (hasGains)
        table.add({std::string("spread of the gains (%)"), std::string("gains"), robustDeviation(gains)});
    const double defects = cv::countNonZero(field.defects);
    table.add({std::string("defective pixels"), std::string("defects"), defects});
    table.add({std::string("defective pixels (%)"), std::string("defects_percent"),
               100 * defects / static_cast<double>(field.defects.total())});
    return table;
}

void learn(const FlatOptions& options)
{
    if (const std::string ending = endingOf(options.out); !ending.empty() && ending != ".npy")
        throw UsageError("'" + options.out + "': a flat field goes to a .npy");
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    FlatLearner learner;
    forEachFrame(*options.input.open(outputs, settings), options.input.quiet,
                 [&](const Frame& frame) { learner.add(frame); });
    if (!options.other.empty()) {
        InputOptions other = options.input;
        other.inputs = options.other;
        forEachFrame(*other.open(outputs, settings), options.input.quiet,
                     [&](const Frame& frame) { learner.addOther(frame); });
    }
    const FlatField field = learner.learn();
    writeFlatPlanes(outputs.file(options.out), field.planes());
    outputs.commit();
    summaryOf(field, !options.other.empty()).print(std::cout, options.format);
}

} // namespace

void addFlatCommand(const Command& program)
{
    const Command flat = program.sub("flat", "Learns how far each pixel of a sensor is off");
    flat.requireSub();
    auto options = std::make_shared<FlatOptions>();
    const Command command =
        flat.sub("learn", "Learns a flat field for --flat of frames of the closed shutter, or of anything "
                          "else that is as warm everywhere");
    options->input.addTo(command);
    command
        .option(
            "--other", options->other,
            "Frames of the shutter, or of a wall, at another temperature: how strongly each pixel responds "
            "is learnt, too")
        .form("FILE");
    options->settings.addTo(command, {"temperature/unit"});
    command
        .option("--out", options->out,
                "The flat field, a .npy of three planes: what each pixel reads, its gain, and flags of those "
                "that are defective")
        .required()
        .form("FILE");
    options->format.addTo(command);
    command.run([options] { learn(*options); });
}

} // namespace thermal

#include "apps/thermal/Colouring.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/ContactSheet.h"
#include "apps/thermal/FilterStages.h"
#include "apps/thermal/Legend.h"
#include "apps/thermal/Measures.h"
#include "apps/thermal/PartialPath.h"
#include "apps/thermal/PictureSink.h"
#include "apps/thermal/Simulator.h"
#include "apps/thermal/Table.h"

#include <CLI/App.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {
namespace {

constexpr std::size_t nFrames = 160;
constexpr std::size_t nWarmUp = 100; ///< until the filters have learnt; measured from there on
constexpr ValueRange roomRange = {29165,
                                  29865}; ///< 18.5 to 25.5 degrees Celsius: flat things fill the palette

struct DemoOptions
{
    std::string out = "demo";
    bool quiet = false;
    TableFormat format;
};

/// The simulated stream after one stage.
struct Exhibit
{
    std::string name;
    NoiseMeter before;
    NoiseMeter after;
    Frame last;
};

Table tableOf(const std::vector<Exhibit>& exhibits, const Chain& chain)
{
    Table table({{"stage", "stage"},
                 {"µs/frame", "us_per_frame", 1},
                 {"noise before", "temporal_before", 2},
                 {"after", "temporal_after", 2},
                 {"stripes before", "stripes_before", 2},
                 {"after", "stripes_after", 2}});
    for (std::size_t i = 0; i < exhibits.size(); ++i) {
        const NoiseFigures before = exhibits[i].before.figures();
        const NoiseFigures after = exhibits[i].after.figures();
        table.add({exhibits[i].name, chain.microseconds(i), before.temporal, after.temporal, before.columns,
                   after.columns});
    }
    return table;
}

void demo(const DemoOptions& options)
{
    Simulator camera(nFrames);
    Chain chain;
    chain.add(makeTemporal(8, 1843));
    std::vector<Exhibit> exhibits(chain.size());
    for (std::size_t i = 0; i < chain.size(); ++i)
        exhibits[i].name = chain.name(i);

    const auto pictures = openSink(options.out + "/", std::nullopt, 9);
    Frame raw;
    std::size_t index = 0;
    forEachFrame(camera, options.quiet, [&](Frame& frame) {
        const bool measured = index++ >= nWarmUp;
        raw = frame.clone();
        Frame before = raw;
        chain.apply(frame, [&](std::size_t i, const Frame& after) {
            if (measured) {
                exhibits[i].before.add(before);
                exhibits[i].after.add(after);
            }
            before = after.clone();
            exhibits[i].last = before;
        });
    });

    Colouring colouring;
    ContactSheet sheet("thermal demo: each stage beside the raw frame", 2);
    const Picture first = colouring.paint(raw, roomRange);
    pictures->write(withLegend(first, colouring, roomRange, true));
    for (const Exhibit& exhibit : exhibits) {
        const Picture picture = colouring.paint(exhibit.last, roomRange);
        pictures->write(withLegend(picture, colouring, roomRange, true));
        sheet.add(exhibit.name, beside(first, picture));
    }
    pictures->finish();
    writePicture(options.out + "/contact-sheet.png", sheet.draw());
    tableOf(exhibits, chain).print(std::cout, options.format);
}

} // namespace

void addDemoCommand(CLI::App& program)
{
    auto options = std::make_shared<DemoOptions>();
    CLI::App& command = *program.add_subcommand("demo", "Runs every stage on a simulated camera");
    command.add_option("--out", options->out, "The folder for the pictures")
        ->capture_default_str()
        ->type_name("DIR");
    options->format.addTo(command);
    command.add_flag("--quiet", options->quiet, "No progress bar");
    command.callback([options] { demo(*options); });
}

} // namespace thermal

#include "apps/thermal/Error.h"
#include "apps/thermal/PixelsCommands.h"
#include "apps/thermal/Table.h"
#include "apps/thermal/Terminal.h"
#include "camera/pixels/PixelOverlay.h"
#include "camera/settings/Parse.h"
#include "recordings/FileList.h"
#include "recordings/PixelFiles.h"
#include "recordings/PngFile.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct MapsOptions
{
    std::vector<std::string> maps;
    std::string size;
    std::string out;
    TableFormat format;
};

/// All of one size; lists take that of the first map that has one.
std::vector<PixelMap> readMaps(const MapsOptions& options, Outputs& outputs)
{
    outputs.protect(options.maps);
    cv::Size size = options.size.empty() ? cv::Size() : parseSize(options.size, "--size");
    for (std::size_t n = 0; n < options.maps.size() && size.empty(); ++n)
        if (endingOf(options.maps[n]) != ".csv")
            size = readAnyMap(options.maps[n]).size();
    if (size.empty())
        throw UsageError(options.maps.front() +
                         ": a list of pixels does not say how large frames are: name it with --size WxH");
    std::vector<PixelMap> maps;
    for (const std::string& path : options.maps)
        maps.push_back(readAnyMap(path, size));
    return maps;
}

void merge(const MapsOptions& options)
{
    Outputs outputs;
    PixelMap all;
    for (const PixelMap& map : readMaps(options, outputs))
        all = all.empty() ? map : PixelMap(all | map);
    writeAnyMap(outputs, options.out, all);
    outputs.commit();
    std::cout << cv::countNonZero(all) << " of " << all.total() << " pixels are bad in "
              << forTerminal(options.out) << '\n';
}

enum Change : int
{
    New = 1,
    Gone = 2,
    Both = 4
};

const std::vector<PixelReason>& changes()
{
    static const std::vector<PixelReason> table = {
        {"new", New, {60, 60, 255}}, {"gone", Gone, {80, 220, 80}}, {"in both", Both, {255, 200, 0}}};
    return table;
}

void diff(const MapsOptions& options)
{
    Outputs outputs;
    const std::vector<PixelMap> maps = readMaps(options, outputs);
    PixelMap changed(maps[0].size(), 0);
    changed.setTo(int(Both), (maps[0] != 0) & (maps[1] != 0));
    changed.setTo(int(New), (maps[0] == 0) & (maps[1] != 0));
    changed.setTo(int(Gone), (maps[0] != 0) & (maps[1] == 0));
    Table counts({{"change", "change"}, {"pixels", "pixels"}});
    for (const PixelReason& change : changes())
        counts.add({change.name, double(cv::countNonZero(changed == static_cast<int>(change.flag)))});
    Table pixels({{"x", "x"}, {"y", "y"}, {"change", "change"}, {"reasons", "reasons"}});
    for (int y = 0; y < changed.rows; ++y)
        for (int x = 0; x < changed.cols; ++x)
            if (changed(y, x) == New || changed(y, x) == Gone)
                pixels.add({double(x), double(y), reasonsOf(changed(y, x), changes()),
                            reasonsOf(maps[changed(y, x) == New ? 1 : 0](y, x))});
    if (!options.out.empty()) {
        writePng(outputs.file(options.out), drawBadPixels(Frame(changed.size(), 0), changed, changes()));
        outputs.commit();
    }
    printTables(std::cout, {{"counts", counts}, {"pixels", pixels}}, options.format);
}

void addSize(const Command& command, MapsOptions& options)
{
    command.option("--size", options.size, "Size of the frames, where only .csv lists are given").form("WxH");
}

} // namespace

void addPixelsMaps(const Command& pixels)
{
    auto options = std::make_shared<MapsOptions>();
    const Command merging =
        pixels.sub("merge", "Makes one map of several, or one map another kind of file: .pgm of "
                            "flags, .csv of x,y, .png mask, .npy");
    merging.option("MAP", options->maps, "Maps, masks and lists; what is bad in one is bad in all of them")
        .required();
    addSize(merging, *options);
    merging.option("--out", options->out, "The map, a .pgm, .csv, .png or .npy").required().form("MAP");
    merging.run([options] { merge(*options); });

    auto two = std::make_shared<MapsOptions>();
    const Command comparing =
        pixels.sub("diff", "Tells which pixels are new in the second map and gone from the first");
    comparing.option("MAP", two->maps, "Two maps, masks or lists").required().values(2);
    addSize(comparing, *two);
    comparing.option("--out", two->out, "A picture of it, a .png").form("FILE");
    two->format.addTo(comparing);
    comparing.run([two] { diff(*two); });
}

} // namespace thermal

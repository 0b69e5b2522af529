#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/Progress.h"
#include "apps/thermal/Simulator.h"
#include "apps/thermal/Table.h"
#include "camera/colours/Colouring.h"
#include "camera/colours/Legend.h"
#include "camera/drawing/ContactSheet.h"
#include "camera/measures/Noise.h"
#include "camera/pixels/PixelDetection.h"
#include "camera/stages/Chain.h"
#include "recordings/PictureSink.h"

#include <opencv2/imgproc.hpp>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

constexpr std::size_t nFrames = 200;
constexpr std::size_t nLearn = 140; ///< until the filters have learnt; measured from there on

/// 18 to 25 degrees Celsius: the room fills the palette, so that noise can be seen.
constexpr ValueRange roomRange = {29115, 29815};

struct DemoOptions
{
    std::string out = "demo";
    std::string record;
    bool quiet = false;
    TableFormat format;
};

/// The stream as one stage of a chain left it.
struct Exhibit
{
    std::string name;
    double microseconds = 0;
    NoiseMeter before;
    NoiseMeter after;
    Frame last;
};

/// What stands in for the pixels that are odd in a frame of one temperature.
Calibration calibrate(const Frame& shutter)
{
    PixelDetection detection(1, false);
    detection.add(shutter);
    constexpr unsigned u32Radius = 10;
    return {"the shutter frame",
            velmo::exp::vision::BadPixelTools::calculateReplacePixels(detection.map(), u32Radius),
            "centikelvin"};
}

/// The settings of a camera that one would use, and those of the single filters of the library.
Settings usual()
{
    Settings settings;
    settings.set("noise/denoise", "normal");
    return settings;
}

Settings single()
{
    Settings settings;
    settings.set("noise/pattern", "45:31:16");
    settings.set("noise/temporal", "16:1843");
    settings.set("noise/spatial", 10);
    settings.set("frame/downsize", "160x120");
    return settings;
}

/// The camera's stream through two chains, looked at between the stages. The second one gets the frames whose
/// bad pixels the first has replaced.
class Tour
{
public:
    enum : std::size_t
    {
        Mended,
        Denoised
    };

    Tour()
        : m_oUsual(usual(), calibrate(m_oCamera.shutter())), m_oSingle(single()),
          m_vecExhibits(m_oUsual.size() + m_oSingle.size())
    {}

    /// @param recording  gets the raw frames, if it is not null
    void run(bool quiet, ImageWriter* recording)
    {
        std::size_t index = 0;
        forEachFrame(m_oCamera, quiet, [&](Frame& frame) {
            if (recording != nullptr)
                recording->write(frame);
            m_oRaw = frame.clone();
            const bool measured = index++ >= nLearn;
            apply(m_oUsual, m_oRaw, 0, measured);
            apply(m_oSingle, m_vecExhibits[Mended].last, m_oUsual.size(), measured);
        });
    }

    const Frame& raw() const { return m_oRaw; }
    const std::vector<Exhibit>& exhibits() const { return m_vecExhibits; }

private:
    void apply(Chain& chain, const Frame& in, std::size_t first, bool measured)
    {
        Frame before = in, frame = in.clone();
        chain.apply(frame, [&](std::size_t i, const Frame& after) {
            Exhibit& exhibit = m_vecExhibits[first + i];
            exhibit.name = chain.name(i);
            exhibit.microseconds = chain.microseconds(i);
            exhibit.last = after.clone();
            if (measured) {
                exhibit.before.add(before);
                exhibit.after.add(exhibit.last);
            }
            before = exhibit.last;
        });
    }

    Simulator m_oCamera{nFrames};
    Chain m_oUsual, m_oSingle;
    std::vector<Exhibit> m_vecExhibits;
    Frame m_oRaw;
};

double paintMicroseconds(Colouring& colouring, const Frame& frame)
{
    constexpr int s32Times = 200;
    Picture picture;
    colouring.paint(frame, roomRange, picture); // builds the table
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < s32Times; ++i)
        colouring.paint(frame, roomRange, picture);
    const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - begin;
    return taken.count() / s32Times;
}

Table tableOf(const Tour& tour, double paintTime)
{
    constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
    Table table({{"stage", "stage"},
                 {"µs/frame", "us_per_frame", 1},
                 {"noise before", "temporal_before", 2},
                 {"after", "temporal_after", 2},
                 {"stripes before", "stripes_before", 2},
                 {"after", "stripes_after", 2}});
    for (const Exhibit& exhibit : tour.exhibits()) {
        const NoiseFigures before = exhibit.before.figures(), after = exhibit.after.figures();
        table.add({exhibit.name, exhibit.microseconds, before.temporal, after.temporal, before.columns,
                   after.columns});
    }
    table.add({std::string("palettise Ironbow"), paintTime, dNone, dNone, dNone, dNone});
    return table;
}

/// Numbered pictures of the last frame after each stage, and all of them on one sheet.
class Gallery
{
public:
    Gallery(Outputs& outputs, std::string folder) : m_oOutputs(outputs), m_strFolder(std::move(folder))
    {
        outputs.folder(m_strFolder);
    }

    /// A picture of its own.
    void show(const std::string& name, const Picture& picture)
    {
        char number[8];
        std::snprintf(number, sizeof number, "%02d-", m_s32Next++);
        write(number + name.substr(0, name.find(' ')), picture);
    }

    /// The same, and beside `left` on the sheet.
    void compare(const std::string& name, const Picture& left, const Picture& picture)
    {
        show(name, picture);
        m_oSheet.add(name, beside(left, picture));
    }

    void finish()
    {
        // Five bits per channel look the same here and make noise a quarter of the file size.
        const cv::Scalar fiveBits = cv::Scalar::all(0xF8);
        const Picture sheet = m_oSheet.draw() & fiveBits;
        write("contact-sheet", sheet);
        Picture small;
        cv::resize(sheet, small, {}, 0.75, 0.75, cv::INTER_AREA);
        write("contact-sheet-small", small & fiveBits);
    }

private:
    void write(const std::string& name, const Picture& picture)
    {
        writePicture(m_oOutputs, m_strFolder + "/" + name + ".png", picture);
    }

    Outputs& m_oOutputs;
    std::string m_strFolder;
    ContactSheet m_oSheet{"each stage beside the raw frame; 18 to 25 °C", 2};
    int m_s32Next = 0;
};

void demo(const DemoOptions& options)
{
    Outputs outputs;
    Gallery gallery(outputs, options.out); // first: a folder that cannot be written is no reason to wait
    const Thermometer thermometer(Scale::parse("centikelvin"));
    std::unique_ptr<ImageWriter> recording;
    if (!options.record.empty())
        recording = openFrameSink(outputs, options.record, nFrames, countsOf(thermometer.scale()));
    Tour tour;
    tour.run(options.quiet, recording.get());
    if (recording)
        recording->finish();

    Colouring colouring(findPalette("Ironbow"));
    const Picture raw = colouring.paint(tour.raw(), roomRange);
    Picture labelled;
    Legend(thermometer).draw(raw, colouring.table(), roomRange, labelled);
    gallery.show("raw", labelled);
    for (const Exhibit& exhibit : tour.exhibits())
        gallery.compare(exhibit.name, raw, colouring.paint(exhibit.last, roomRange));
    const Frame& clean = tour.exhibits()[Tour::Denoised].last;
    Settings toned;
    toned.set("colours/palette", "Ironbow");
    toned.set("colours/tone", "plateau");
    gallery.compare("tone plateau, denoised", raw, Colouring(toned, thermometer).paint(clean, roomRange));
    Colouring grey(findPalette("Grayscale"));
    gallery.compare("palettise Ironbow", grey.paint(tour.raw(), roomRange), raw);
    gallery.finish();
    outputs.commit();

    tableOf(tour, paintMicroseconds(colouring, clean)).print(std::cout, options.format);
}

} // namespace

void addDemoCommand(const Command& program)
{
    auto options = std::make_shared<DemoOptions>();
    const Command command = program.sub("demo", "Runs every stage on a simulated camera");
    command.option("--out", options->out, "The folder for the pictures").showDefault().form("DIR");
    command
        .option("--record", options->record,
                "Keep the raw frames, too: a .tiff, .mkv, .npy, .raw or a folder")
        .form("PATH");
    options->format.addTo(command);
    addQuiet(command, options->quiet);
    command.run([options] { demo(*options); });
}

} // namespace thermal

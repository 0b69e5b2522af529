#include "apps/thermal/ColourOptions.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/FilterOptions.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "camera/colours/Legend.h"
#include "camera/colours/Range.h"
#include "camera/drawing/Enlarge.h"

#include <CLI/App.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct RenderOptions
{
    InputOptions input;
    FilterOptions filters;
    ColourOptions colours;
    OutputOptions output;
    std::string range = "auto";
    bool legend = false;
    bool celsius = false;
};

/// From filtered frames to pictures in the sink.
class Renderer
{
public:
    explicit Renderer(const RenderOptions& options)
        : m_oOptions(options), m_oRule(RangeRule::parse(options.range, "--range")),
          m_oColouring(makeColouring(options.colours))
    {}

    /// Draws the frame, or holds it back until the range is known.
    void add(const Frame& frame, PictureSink& sink)
    {
        if (!m_oRule.locks()) {
            draw(frame, m_oRule.of(frame), sink);
        } else if (m_oLocked) {
            draw(frame, *m_oLocked, sink);
        } else {
            // Drawn once the range is known, so that the first pictures have the colours of the last.
            m_vecWaiting.push_back(frame.clone());
            if (m_vecWaiting.size() == RangeRule::nLearnFrames)
                lock(sink);
        }
    }

    void finish(PictureSink& sink)
    {
        if (!m_vecWaiting.empty())
            lock(sink);
        sink.finish();
    }

    void sayDewPoint() const
    {
        if (m_oColouring.air())
            std::printf("dew point of the air: %.1f °C\n", double{m_oColouring.air()->dewPoint()});
    }

private:
    void lock(PictureSink& sink)
    {
        m_oLocked = m_oRule.of(m_vecWaiting.front());
        for (const Frame& frame : m_vecWaiting)
            m_oLocked = unite(*m_oLocked, m_oRule.of(frame));
        for (const Frame& frame : m_vecWaiting)
            draw(frame, *m_oLocked, sink);
        m_vecWaiting.clear();
    }

    void draw(const Frame& frame, ValueRange range, PictureSink& sink)
    {
        Picture picture = enlarged(m_oColouring.paint(frame, range), m_oOptions.output.scale);
        if (m_oOptions.legend)
            picture = withLegend(picture, m_oColouring, range, m_oOptions.celsius);
        sink.write(picture);
    }

    const RenderOptions& m_oOptions;
    RangeRule m_oRule;
    Colouring m_oColouring;
    std::optional<ValueRange> m_oLocked;
    std::vector<Frame> m_vecWaiting;
};

void render(const RenderOptions& options)
{
    // All options first: what is wrong with them is said before files are read.
    Chain chain = makeChain(options.filters);
    Renderer renderer(options);
    const auto source = options.input.open();
    const auto sink = options.output.open(*source);
    forEachFrame(*source, options.input.quiet, [&](Frame& frame) {
        chain.apply(frame);
        renderer.add(frame, *sink);
    });
    renderer.finish(*sink);
    renderer.sayDewPoint();
}

} // namespace

void addRenderCommand(CLI::App& program)
{
    auto options = std::make_shared<RenderOptions>();
    CLI::App& command = *program.add_subcommand("render", "Turns frames into pictures");
    options->input.addTo(command);
    options->output.addTo(command);
    command
        .add_option("--range", options->range,
                    "Values at the ends of the palette: auto (each frame's own), lock (of the first 10 "
                    "frames together, held), MIN:MAX, or percentiles like p1:p99")
        ->capture_default_str()
        ->type_name("RANGE");
    options->colours.addTo(command);
    options->filters.addTo(command);
    command.add_flag("--legend", options->legend, "Add a bar of the colours with their values");
    command.add_flag("--celsius", options->celsius,
                     "Values are hundredths of a kelvin: label them in degrees Celsius");
    command.callback([options] { render(*options); });
}

} // namespace thermal

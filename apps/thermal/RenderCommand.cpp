#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "recordings/ThreadedSink.h"

#include <iostream>
#include <memory>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct RenderOptions
{
    InputOptions input;
    SettingsOptions settings;
    OutputOptions output;
};

/// From clean frames to pictures. Frames that still decide about the range of all of them wait, so that the
/// first pictures have the colours of the last.
class Painter : public ImageWriter
{
public:
    Painter(Camera& camera, ImageWriter& sink) : m_oCamera(camera), m_oSink(sink) {}

    void write(const cv::Mat& image) override
    {
        const Frame frame(image);
        const bool waits = m_oCamera.range().learning();
        m_oCamera.range().learn(frame);
        if (waits)
            m_vecWaiting.push_back(frame.clone());
        else
            m_oSink.write(m_oCamera.paint(frame));
        if (!m_oCamera.range().learning())
            paintWaiting();
    }

    void finish() override
    {
        m_oCamera.range().hold();
        paintWaiting();
        m_oSink.finish();
    }

private:
    void paintWaiting()
    {
        for (const Frame& frame : m_vecWaiting)
            m_oSink.write(m_oCamera.paint(frame));
        m_vecWaiting.clear();
    }

    Camera& m_oCamera;
    ImageWriter& m_oSink;
    std::vector<Frame> m_vecWaiting;
};

void render(const RenderOptions& options)
{
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    const auto source = options.input.open(outputs, settings);
    Camera camera = openCamera(settings, outputs, *source);
    const auto sink = options.output.open(outputs, *source);
    // While one frame is painted, the next is read and cleaned.
    ThreadedSink painter(std::make_unique<Painter>(camera, *sink));
    std::size_t frames = 0;
    forEachFrame(*source, options.input.quiet, [&](const Frame& raw) {
        painter.write(camera.clean(raw));
        ++frames;
    });
    painter.finish();
    outputs.commit();
    tellOfSingleFrame(settings, frames);
    if (const std::size_t times = camera.range().widenings(); times > 0)
        std::cerr << "thermal: --range lock: widened " << times << (times == 1 ? " time" : " times")
                  << ", as more than 1 % of a frame lay outside\n";
    const Degrees degrees = camera.thermometer().degrees();
    if (const auto& air = camera.colouring().air())
        std::cout << "dew point of the air: "
                  << camera.thermometer().text(degrees.fromCelsius(double{air->dewPoint()})) << '\n';
}

} // namespace

void addRenderCommand(const Command& program)
{
    auto options = std::make_shared<RenderOptions>();
    const Command command = program.sub("render", "Turns frames into pictures");
    options->input.addTo(command);
    options->output.addTo(command);
    options->settings.addTo(command, {"temperature", "pixels", "noise", "frame", "colours", "picture"});
    command.run([options] { render(*options); });
}

} // namespace thermal

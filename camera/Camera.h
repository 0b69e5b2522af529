#pragma once

#include "camera/Calibration.h"
#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/Settings.h"
#include "camera/colours/Colouring.h"
#include "camera/colours/Legend.h"
#include "camera/colours/Range.h"
#include "camera/measures/BlobTracker.h"
#include "camera/measures/Blobs.h"
#include "camera/stages/Chain.h"
#include "camera/temperature/ChosenUnit.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <optional>
#include <vector>

namespace velmo::camera {

/// What there is in a frame.
struct Measurement
{
    unsigned short low = 0; ///< least and greatest value
    unsigned short high = 0;
    double mean = 0;
    std::vector<Blob> blobs; ///< with the labels that they keep from frame to frame
};

/// A whole camera: raw frames in, clean frames, pictures and measurements out.
///
///     Settings settings;
///     settings.set("noise/denoise", "normal");
///     Camera camera(settings);
///     while (sensor.next(raw))
///         screen.put(camera.show(raw));
///
/// One object per stream, one thread at a time: filters learn from the frames, in the order in which they
/// come. Only `clean` on one thread and `paint`, of copies of its frames, on another have nothing in common.
/// What it returns is its own memory, used again by the next call; frames of one size are not allocated for,
/// once the camera runs.
class VELMO_API Camera
{
public:
    /// @throws Exception  for settings that contradict each other, and for a palette that does not exist
    explicit Camera(const Settings& settings = {}, const Calibration& calibration = {});

    /// The next raw frame of the stream, corrected.
    /// @throws Exception  for a frame that the settings are not for; as the stages do
    const Frame& clean(const Frame& raw);

    /// What there is in a corrected frame.
    const Measurement& measure(const Frame& clean);

    /// A corrected frame in colours, with what was measured last drawn over it if blobs are looked for.
    const Picture& paint(const Frame& clean);

    /// The next raw frame of the stream as a picture: `clean`, `measure` if anything is drawn of that,
    /// `paint`.
    const Picture& show(const Frame& raw);

    /// What its values mean.
    const ChosenUnit& unit() const { return m_oUnit; }
    const Thermometer& thermometer() const { return m_oUnit.thermometer; }

    const Chain& chain() const { return m_oChain; }
    const Colouring& colouring() const { return m_oColouring; }
    const BlobTracker& tracker() const { return m_oTracker; }

    /// The range of values that `paint` uses.
    RangeRule& range() { return m_oRange; }

private:
    ChosenUnit m_oUnit;
    Chain m_oChain;
    RangeRule m_oRange;
    Colouring m_oColouring;
    std::optional<Legend> m_oLegend;
    std::optional<BlobRule> m_oBlobRule;
    BlobTracker m_oTracker;
    int m_s32Scale;

    Frame m_oRaw;
    Frame m_oClean;
    Picture m_oPainted;
    Picture m_oEnlarged;
    Picture m_oLabelled;
    Measurement m_oMeasurement;
};

} // namespace velmo::camera

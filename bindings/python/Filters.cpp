#include "bindings/python/Arrays.h"
#include "bindings/python/Module.h"

#include "core/memory/Overlap.h"
#include "vision/imgproc/DownSize.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"
#include "vision/imgproc/TemporalNoiseReductionRef.h"

#include <memory>
#include <variant>

namespace velmo::python {
namespace {

using namespace exp::vision;

/// One stream of int16 or uint16: the filter is that of the type of the last frame.
template <template <class> class Filter>
class Temporal
{
public:
    static constexpr int s32MaxByte = 255, s32MaxWord = 65535;

    Temporal(py::handle gain, py::handle factor)
        : m_s32Gain(inRange(gain, "control_gain", 0, s32MaxByte)),
          m_s32Factor(inRange(factor, "feedback_factor", 0, s32MaxWord)), m_oFilter(make<unsigned short>())
    {}

    int gain() const { return m_s32Gain; }
    int factor() const { return m_s32Factor; }

    void setGain(int gain)
    {
        unlocked(m_oMutex, [&] {
            std::visit([&](auto& filter) { filter.setControlGain(static_cast<unsigned char>(gain)); },
                       m_oFilter);
        });
        m_s32Gain = gain;
    }
    void setFactor(int factor)
    {
        unlocked(m_oMutex, [&] {
            std::visit([&](auto& filter) { filter.setFeedbackFactor(static_cast<unsigned short>(factor)); },
                       m_oFilter);
        });
        m_s32Factor = factor;
    }

    /// A copy of the frame, or what `out` is, after `work` with the filter.
    template <class Work>
    py::object run(py::handle frame, py::handle out, Work&& work)
    {
        const cv::Mat in = view(frame, "frame", {CV_16UC1, CV_16SC1});
        Output output(out, in.size(), in.type());
        unlocked(m_oMutex, [&] {
            exp::untouched(in, output.image()).copyTo(output.image());
            apply(output.image(), work);
        });
        return output.array();
    }

    void init(py::handle frame)
    {
        const cv::Mat in = view(frame, "frame", {CV_16UC1, CV_16SC1});
        unlocked(m_oMutex, [&] { apply(in, [](auto& filter, auto& image) { filter.initFilter(image); }); });
    }

private:
    template <class T>
    Filter<T> make() const
    {
        return Filter<T>(static_cast<unsigned char>(m_s32Gain), static_cast<unsigned short>(m_s32Factor));
    }

    template <class Work>
    void apply(const cv::Mat& image, Work&& work)
    {
        if (image.type() == CV_16SC1)
            applyAs<short>(image, work);
        else
            applyAs<unsigned short>(image, work);
    }

    template <class T, class Work>
    void applyAs(const cv::Mat& image, Work&& work)
    {
        if (!std::holds_alternative<Filter<T>>(m_oFilter))
            m_oFilter = make<T>();
        cv::Mat_<T> frame = image;
        work(std::get<Filter<T>>(m_oFilter), frame);
    }

    std::mutex m_oMutex;
    int m_s32Gain;
    int m_s32Factor;
    std::variant<Filter<unsigned short>, Filter<short>> m_oFilter;
};

/// What both temporal filters have.
template <template <class> class Filter>
py::class_<Temporal<Filter>> addTemporal(py::module_& module, const char* name, const char* doc, int maxGain,
                                         int maxFactor)
{
    using Class = Temporal<Filter>;
    return py::class_<Class>(module, name, doc)
        .def(py::init<py::handle, py::handle>(), py::arg("control_gain") = 16,
             py::arg("feedback_factor") = 2048)
        .def_property(
            "control_gain", &Class::gain,
            [maxGain](Class& self, py::handle gain) {
                self.setGain(inRange(gain, "control_gain", 0, maxGain));
            },
            "0..16, in 1/16: scales the difference before the weight is looked up. Setting it starts the "
            "filter\n"
            "anew with the next frame.")
        .def_property(
            "feedback_factor", &Class::factor,
            [maxFactor](Class& self, py::handle factor) {
                self.setFactor(inRange(factor, "feedback_factor", 0, maxFactor));
            },
            "0..2048, in 1/2048: scales the weight. Setting it starts the filter anew with the next frame.")
        .def(
            "process",
            [](Class& self, py::handle frame, py::handle out) {
                return self.run(frame, out, [](auto& filter, auto& image) { filter.process(image); });
            },
            py::arg("frame"), py::arg("out") = py::none(),
            "process(frame, out=None) -> the filtered frame\n\n"
            "frame: rows x cols raw values, uint16 or int16, any size, also empty. The first frame, the "
            "first one\n"
            "after a setter and the first one of another size or type come out unchanged.\n"
            "out: an array of the same shape and type, possibly `frame` itself.")
        .def("init_filter", &Class::init, py::arg("frame"),
             "init_filter(frame)\n\nMakes `frame` the previous output.")
        .def(py::pickle([](const Class& self) { return py::make_tuple(self.gain(), self.factor()); },
                        [](const py::tuple& state) {
                            return std::make_unique<Class>(py::object(state[0]), py::object(state[1]));
                        }));
}

void addTemporals(py::module_& module)
{
    using Class = Temporal<TemporalNoiseReduction>;
    const auto run = [](auto method) {
        return
            [method](Class& self, py::handle frame, py::handle out) { return self.run(frame, out, method); };
    };
    addTemporal<TemporalNoiseReduction>(
        module, "TemporalNoiseReduction",
        "TemporalNoiseReduction(control_gain=16, feedback_factor=2048)\n\n"
        "Recursive temporal filter of one frame stream: every pixel is blended with the filter's previous "
        "output,\n"
        "the less the more the two differ. Static noise is smoothed strongly, what moves passes almost "
        "unchanged.\n\n"
        "Holds the previous output; one object per stream. A pickle holds the parameters, not the state.\n"
        "The constructor takes a gain of 0..255 and a factor of 0..65535: beyond 16 and 2048 a looked-up\n"
        "difference outside the table has weight 0, arithmetic wraps at 32 bits, and weights and results are "
        "cut\n"
        "to 16. The properties take the ranges that are said there.",
        TemporalNoiseReduction<short>::u8MaxControlGain, TemporalNoiseReduction<short>::u16MaxFeedbackFactor)
        .def("filter_with_any_param",
             run([](auto& filter, auto& image) { filter.filterWithAnyParam(image); }), py::arg("frame"),
             py::arg("out") = py::none(),
             "filter_with_any_param(frame, out=None) -> the filtered frame\n\n"
             "The recurrence for any gain and factor, rounding halves up; `process` chooses between this and "
             "the\n"
             "next. The state is first built from `frame` if there is none of its size.")
        .def("filter_with_max_param",
             run([](auto& filter, auto& image) { filter.filterWithMaxParam(image); }), py::arg("frame"),
             py::arg("out") = py::none(),
             "filter_with_max_param(frame, out=None) -> the filtered frame\n\n"
             "The recurrence for gain 16 and factor 2048, whatever the parameters are. It rounds down, so "
             "that it\n"
             "can differ by 1 from the general one.");
    addTemporal<TemporalNoiseReductionRef>(
        module, "TemporalNoiseReductionRef",
        "TemporalNoiseReductionRef(control_gain=16, feedback_factor=2048)\n\n"
        "The temporal filter in floating point, with the state kept unrounded. Slow; what the fast filter "
        "is\n"
        "compared with, and for still pictures where a pixel is to converge fully.\n\n"
        "Any gain of 0..255 and factor of 0..65535; above 2048 the recurrence may grow without bound, and "
        "an\n"
        "output that does not fit 32 bits becomes 0. A pickle holds the parameters, not the state.",
        Class::s32MaxByte, Class::s32MaxWord);
}

/// A filter of int16 frames with one mutex.
template <class Filter>
struct Shared
{
    template <class... Arguments>
    explicit Shared(Arguments... arguments) : filter(arguments...)
    {}

    py::object process(py::handle frame, py::handle out)
    {
        const cv::Mat in = view(frame, "frame", CV_16SC1);
        Output output(out, in.size(), CV_16SC1);
        cv::Mat_<short> image = output.image();
        unlocked(mutex, [&] { filter.process(in, image); });
        output.image() = image;
        return output.array();
    }

    std::mutex mutex;
    Filter filter;
};

const char* const processDoc = "process(frame, out=None) -> the filtered frame\n\n"
                               "frame: rows x cols raw values, int16, any size, also empty.\n"
                               "out: an array of the same shape and type, possibly `frame` itself.";

struct Spatial : Shared<SpatialNoiseRemover>
{
    explicit Spatial(int gain) : Shared(gain), m_s32Gain(gain) {}

    int m_s32Gain;
};

int checkedGain(py::handle gain)
{
    return inRange(gain, "gain", 0, SpatialNoiseRemover::s32MaxGain);
}

void addSpatial(py::module_& module)
{
    py::class_<Spatial>(
        module, "SpatialNoiseRemover",
        "SpatialNoiseRemover(gain=0)\n\n"
        "Smooths a frame where it is calm and leaves edges alone; no state from frame to frame.\n\n"
        "gain: 0..31, 0 is off.")
        .def(py::init([](py::handle gain) { return std::make_unique<Spatial>(checkedGain(gain)); }),
             py::arg("gain") = 0)
        .def_property(
            "gain", [](const Spatial& self) { return self.m_s32Gain; },
            [](Spatial& self, py::handle number) {
                const int gain = checkedGain(number);
                unlocked(self.mutex, [&] { self.filter.setGain(gain); });
                self.m_s32Gain = gain;
            },
            "0..31, 0 is off.")
        .def("process", &Spatial::process, py::arg("frame"), py::arg("out") = py::none(), processDoc)
        .def(py::pickle([](const Spatial& self) { return py::make_tuple(self.m_s32Gain); },
                        [](const py::tuple& state) {
                            return std::make_unique<Spatial>(checkedGain(py::object(state[0])));
                        }));
}

struct Pattern : Shared<StaticPatternRemover>
{
    static constexpr int s32MaxThreshold = StaticPatternRemover::s32MaxThreshold;
    static constexpr int s32MaxLimit = StaticPatternRemover::s32MaxLimit;

    Pattern(py::handle threshold, py::handle line, py::handle frame)
    {
        setThreshold(threshold);
        setLineLimit(line);
        setFrameLimit(frame);
    }

    void setThreshold(py::handle number)
    {
        set(m_s32Threshold, inRange(number, "threshold", 0, s32MaxThreshold),
            &StaticPatternRemover::setThreshold);
    }
    void setLineLimit(py::handle number)
    {
        set(m_s32LineLimit, inRange(number, "line_limit", 0, s32MaxLimit),
            &StaticPatternRemover::setLineLimit);
    }
    void setFrameLimit(py::handle number)
    {
        set(m_s32FrameLimit, inRange(number, "frame_limit", 0, s32MaxLimit),
            &StaticPatternRemover::setFrameLimit);
    }

    void set(int& kept, int value, bool (StaticPatternRemover::*setter)(int))
    {
        unlocked(mutex, [&] { (filter.*setter)(value); });
        kept = value;
    }

    int m_s32Threshold = 0;
    int m_s32LineLimit = 0;
    int m_s32FrameLimit = 0;
};

void addPattern(py::module_& module)
{
    py::class_<Pattern>(
        module, "StaticPatternRemover",
        "StaticPatternRemover(threshold=30, line_limit=31, frame_limit=31)\n\n"
        "Removes what does not move with the scene: an offset per column (stripes) and one per pixel.\n"
        "Both are learnt slowly from frame to frame, where the scene around a pixel is calm.\n\n"
        "Holds what it has learnt; one object per stream. A pickle holds the parameters alone.")
        .def(py::init<py::handle, py::handle, py::handle>(), py::arg("threshold") = 30,
             py::arg("line_limit") = 31, py::arg("frame_limit") = 31)
        .def_property(
            "threshold", [](const Pattern& self) { return self.m_s32Threshold; }, &Pattern::setThreshold,
            "0..100 counts: an offset is learnt where the deviations around a pixel are smaller; 0 learns "
            "nothing.")
        .def_property(
            "line_limit", [](const Pattern& self) { return self.m_s32LineLimit; }, &Pattern::setLineLimit,
            "0..31 counts: what a column's offset is limited to.")
        .def_property(
            "frame_limit", [](const Pattern& self) { return self.m_s32FrameLimit; }, &Pattern::setFrameLimit,
            "0..31 counts: what a pixel's offset is limited to.")
        .def(
            "init",
            [](Pattern& self, std::pair<int, int> shape) {
                unlocked(self.mutex, [&] { self.filter.init({shape.second, shape.first}); });
            },
            py::arg("shape"),
            "init(shape)\n\nForgets what was learnt and makes room for frames of (rows, cols).")
        .def("process", &Pattern::process, py::arg("frame"), py::arg("out") = py::none(),
             "process(frame, out=None) -> the corrected frame\n\n"
             "Corrects a frame with what was learnt from the frames before it and learns from it.\n\n"
             "frame: rows x cols raw values, int16, any size, also empty. A saturated pixel (32767) stays "
             "so.\n"
             "out: an array of the same shape and type, possibly `frame` itself.")
        .def(py::pickle(
            [](const Pattern& self) {
                return py::make_tuple(self.m_s32Threshold, self.m_s32LineLimit, self.m_s32FrameLimit);
            },
            [](const py::tuple& state) {
                return std::make_unique<Pattern>(py::object(state[0]), py::object(state[1]),
                                                 py::object(state[2]));
            }));
}

/// The functions of DownSize: a frame of int16 becomes one of this size.
template <void (*resize)(cv::Mat_<short>&, cv::Mat_<short>&)>
py::object resized(py::handle frame, py::handle out, cv::Size size)
{
    cv::Mat_<short> in = view(frame, "frame", CV_16SC1);
    Output output(out, size, CV_16SC1);
    cv::Mat_<short> image = output.image();
    unlocked([&] { resize(in, image); });
    output.image() = image;
    return output.array();
}

void addDownSize(py::module_& module)
{
    struct Class
    {};
    py::class_<Class>(
        module, "DownSize",
        "Shrinks a frame of 180 rows x 240 cols, int16, by a fixed ratio. Every division rounds toward\n"
        "zero. A frame of another size is an Error.")
        .def_static(
            "resize_240_to_160",
            [](py::handle frame, py::handle out) {
                return resized<DownSize::resize240To160>(frame, out, {160, 120});
            },
            py::arg("frame"), py::arg("out") = py::none(),
            "resize_240_to_160(frame, out=None) -> 120 x 160 int16\n\n"
            "Three pixels become two, each two thirds of its nearer one and a third of the middle one.")
        .def_static(
            "resize_240_to_120",
            [](py::handle frame, py::handle out) {
                return resized<DownSize::resize240To120>(frame, out, {120, 90});
            },
            py::arg("frame"), py::arg("out") = py::none(),
            "resize_240_to_120(frame, out=None) -> 90 x 120 int16\n\nThe mean of two by two pixels.");
}

} // namespace

void addFilters(py::module_& module)
{
    addTemporals(module);
    addSpatial(module);
    addPattern(module);
    addDownSize(module);
}

} // namespace velmo::python

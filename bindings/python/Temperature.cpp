#include "bindings/python/Arrays.h"
#include "bindings/python/Module.h"

#include "camera/temperature/Air.h"
#include "camera/temperature/Radiometry.h"
#include "camera/temperature/Scale.h"

#include <memory>

namespace velmo::python {
namespace {

using camera::Radiometry;
using camera::Scale;

void requireDegrees(const Scale& scale)
{
    if (!scale.hasDegrees())
        VELMO_THROW("counts have no temperatures; another unit is needed");
}

py::object celsius(const Scale& scale, py::handle frame, py::handle out)
{
    requireDegrees(scale);
    const cv::Mat in = view(frame, "frame", CV_16UC1);
    Output output(out, in.size(), CV_32FC1);
    unlocked([&] {
        const float* const table = scale.celsius().data();
        for (int r = 0; r < in.rows; ++r) {
            const auto* const values = in.ptr<unsigned short>(r);
            auto* const degrees = output.image().ptr<float>(r);
            for (int c = 0; c < in.cols; ++c)
                degrees[c] = table[values[c]];
        }
    });
    return output.array();
}

py::object table(const Scale& scale)
{
    requireDegrees(scale);
    const cv::Mat row(1, Scale::s32Values, CV_32FC1, const_cast<float*>(scale.celsius().data()));
    return copied(row).attr("reshape")(-1);
}

unsigned short scaleValue(py::handle value)
{
    return static_cast<unsigned short>(inRange(value, "value", 0, Scale::s32Values - 1));
}

void addScale(py::module_& module)
{
    py::class_<Scale>(module, "Scale",
                      "Scale(unit=\"counts\")\n\n"
                      "What the values of a recording mean, by the unit that they count in:\n\n"
                      "  counts                 nothing that is known: no temperatures\n"
                      "  centikelvin            0.01 K, from absolute zero\n"
                      "  decikelvin             0.1 K\n"
                      "  kelvin/16, kelvin/64   1/16 K, 1/64 K\n"
                      "  celsius/10             0.1 degrees Celsius, signed\n"
                      "  linear:GAIN:OFFSET     GAIN x value + OFFSET is degrees Celsius\n"
                      "  planck:R1,B,F,O,R2     B / ln(R1 / (R2 (value + O)) + F) is kelvin\n\n"
                      "Error for an unknown unit and for constants that give no temperatures.")
        .def(py::init(&Scale::parse), py::arg("unit") = "counts")
        .def_property_readonly("text", &Scale::text, "The unit.")
        .def_property_readonly("has_degrees", &Scale::hasDegrees, "Whether its values have temperatures.")
        .def("celsius", &celsius, py::arg("frame"), py::arg("out") = py::none(),
             "celsius(frame, out=None) -> rows x cols float32\n\n"
             "Degrees Celsius of a frame, uint16; -inf and inf where a value lies below and above all "
             "temperatures.\n"
             "Error for counts.")
        .def_property_readonly("table", &table,
                               "Degrees Celsius of all 65,536 values, float32. Error for counts.")
        .def(
            "doubt",
            [](const Scale& self, py::handle median, const std::string& degrees) {
                return self.doubt(
                    static_cast<unsigned short>(inRange(median, "median", 0, Scale::s32Values - 1)),
                    camera::Degrees::parse(degrees));
            },
            py::arg("median"), py::arg("degrees") = "C",
            "Why this can hardly be the unit of a recording with this median value, in one line in degrees "
            "C, K "
            "or F;\n"
            "empty if it can. A wrong unit that gives temperatures of this world passes.")
        .def(
            "slope",
            [](const Scale& self, py::handle value) {
                requireDegrees(self);
                return self.slope(scaleValue(value));
            },
            py::arg("value"),
            "slope(value) -> how many degrees one more count is around a value; 0 where there are none")
        .def("of_objects", &Scale::ofObjects, py::arg("radiometry"),
             "of_objects(radiometry) -> Scale\n\n"
             "The same values, but as the temperatures of the objects that look like them. Error for counts.")
        .def("__repr__", [](const Scale& self) { return "Scale('" + self.text() + "')"; })
        .def(py::pickle(
            [](const Scale& self) {
                if (self.hasDegrees() && self.celsius() != Scale::parse(self.text()).celsius())
                    VELMO_THROW("a scale of objects is not pickled; its unit and its Radiometry are");
                return py::make_tuple(self.text());
            },
            [](const py::tuple& state) { return Scale::parse(state[0].cast<std::string>()); }));
}

py::tuple stateOf(const Radiometry& self)
{
    const Radiometry::Settings& chosen = self.settings();
    return py::make_tuple(chosen.emissivity, chosen.reflected, chosen.transmission, chosen.air,
                          chosen.windowTransmission, chosen.window, self.band().text());
}

void addRadiometry(py::module_& module)
{
    const auto made = [](double emissivity, double reflected, double transmission, double air,
                         double windowTransmission, double window, const std::string& band) {
        return Radiometry({emissivity, reflected, transmission, air, windowTransmission, window},
                          camera::Band::parse(band));
    };
    py::class_<Radiometry>(
        module, "Radiometry",
        "Radiometry(emissivity=1, reflected=20, transmission=1, air=20, window_transmission=1, window=20,\n"
        "           band=\"1430,1\")\n\n"
        "What a camera sees of an object, and the way back. The object sends only a part of what a black "
        "body of\n"
        "its temperature would, and mirrors its surroundings with the rest; air and a window on the way let "
        "a part\n"
        "through and add their own. Shares are 0.01 to 1, temperatures degrees Celsius; band: \"B\", \"B,F\" "
        "of\n"
        "1 / (exp(B/T) - F), or \"total\" for T^4. Error for a value outside its limits.")
        .def(py::init(made), py::arg("emissivity") = 1.0, py::arg("reflected") = 20.0,
             py::arg("transmission") = 1.0, py::arg("air") = 20.0, py::arg("window_transmission") = 1.0,
             py::arg("window") = 20.0, py::arg("band") = "1430,1")
        .def(
            "object", &Radiometry::object, py::arg("apparent"),
            "object(apparent) -> the temperature of an object that looks as warm as a black body of this one")
        .def("apparent", &Radiometry::apparent, py::arg("object"),
             "apparent(object) -> the temperature of the black body that an object of this temperature looks "
             "like")
        .def("__repr__",
             [](const Radiometry& self) { return "Radiometry" + std::string(py::repr(stateOf(self))); })
        .def(py::pickle(&stateOf, [made](const py::tuple& state) {
            return made(state[0].cast<double>(), state[1].cast<double>(), state[2].cast<double>(),
                        state[3].cast<double>(), state[4].cast<double>(), state[5].cast<double>(),
                        state[6].cast<std::string>());
        }));
}

} // namespace

void addTemperature(py::module_& module)
{
    addScale(module);
    addRadiometry(module);
    module.def(
        "air_transmission", &camera::airTransmission, py::arg("metres"), py::arg("celsius"),
        py::arg("percent"),
        "air_transmission(metres, celsius, percent) -> share of radiation that a path of air lets through");
    module.def(
        "dew_point",
        [](float celsius, float percent) {
            return camera::Air{celsius, percent}.dewPoint();
        },
        py::arg("celsius"), py::arg("percent"),
        "dew_point(celsius, percent) -> the temperature at which air condenses, in degrees Celsius");
}

} // namespace velmo::python

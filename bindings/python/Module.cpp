#include "bindings/python/Module.h"

#include "core/Exception.h"

#include <opencv2/core.hpp>

namespace py = pybind11;

namespace velmo::python {
namespace {

py::handle errorClass; // lives as long as the module, which is never unloaded

void raise(const std::string& message, const std::string& location)
{
    const py::object error = errorClass(message);
    error.attr("location") = location.substr(0, location.find('\n'));
    PyErr_SetObject(errorClass.ptr(), error.ptr());
}

} // namespace

void addErrors(py::module_& module)
{
    errorClass = PyErr_NewExceptionWithDoc(
        "velmo.Error",
        "What the library refuses. str() is one line that names the thing, the value and the\n"
        "limit; `location` is the place in the library, or empty.",
        nullptr, nullptr);
    errorClass.attr("location") = "";
    module.attr("Error") = errorClass;
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const exp::Exception& error) {
            raise(error.what(), error.location());
        } catch (const cv::Exception& error) {
            if (error.code == cv::Error::StsNoMem)
                PyErr_SetString(PyExc_MemoryError, error.err.c_str());
            else
                raise(error.err, error.file + ": " + std::to_string(error.line) + ": " + error.func);
        } catch (const std::logic_error& error) {
            raise(error.what(), "");
        }
    });
}

} // namespace velmo::python

PYBIND11_MODULE(_velmo, module)
{
    using namespace velmo::python;
    py::options options;
    options.disable_function_signatures(); // the stubs have them, by the names of Python
    module.attr("__version__") = VELMO_VERSION;
    addErrors(module);
    addFilters(module);
    addColours(module);
    addPixels(module);
    addStorage(module);
    addTemperature(module);
    addCamera(module);
    addPixelSearch(module);
    addMeasures(module);
    addRecordings(module);

    py::list names;
    for (const auto& [name, value] : py::dict(module.attr("__dict__")))
        // Not `open`, which would hide that of Python.
        if (name.cast<std::string>().front() != '_' && name.cast<std::string>() != "open")
            names.append(name);
    module.attr("__all__") = names;
}

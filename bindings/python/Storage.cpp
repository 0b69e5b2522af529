#include "bindings/python/Storage.h"

#include "bindings/python/Module.h"

#include "core/codecs/StorageDecoder.h"

#include <sstream>
#include <typeinfo>

namespace py = pybind11;

namespace velmo::python {
namespace {

using Tree = exp::DataStorage<std::string>;
using exp::Variant;

py::object objectOf(const Variant& value)
{
    const std::type_info& type = value.getTypeInfo();
    if (type == typeid(Tree))
        return dictOf(value.value<Tree>());
    if (type == typeid(bool))
        return py::bool_(value.toBool());
    if (type == typeid(std::string))
        return py::reinterpret_steal<py::object>(PyUnicode_DecodeUTF8(
            value.value<std::string>().data(), static_cast<py::ssize_t>(value.value<std::string>().size()),
            "surrogateescape"));
    if (type == typeid(std::vector<unsigned char>)) {
        const auto& bytes = value.value<std::vector<unsigned char>>();
        return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    if (value.isFloatingPoint())
        return py::float_(value.toDouble());
    return type == typeid(std::uint64_t) ? py::int_(value.toUnsignedInt64())
                                         : py::int_(value.toSignedInt64());
}

std::shared_ptr<Variant> valueOf(const std::string& key, py::handle value)
{
    if (py::isinstance<py::dict>(value))
        return Variant::create(treeOf(py::reinterpret_borrow<py::dict>(value)));
    if (py::isinstance<py::bool_>(value))
        return Variant::create(value.cast<bool>());
    if (PyIndex_Check(value.ptr()) != 0) { // those of numpy too
        const auto number = py::reinterpret_steal<py::int_>(PyNumber_Index(value.ptr()));
        return number.attr("__lt__")(0).cast<bool>() ? Variant::create(number.cast<std::int64_t>())
                                                     : Variant::create(number.cast<std::uint64_t>());
    }
    if (py::isinstance<py::float_>(value))
        return Variant::create(value.cast<double>());
    if (py::isinstance<py::str>(value))
        return Variant::create(value.cast<std::string>());
    if (py::isinstance<py::bytes>(value)) {
        const auto bytes = value.cast<std::string>();
        return Variant::create(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    }
    throw py::type_error(key + ": a " + Py_TYPE(value.ptr())->tp_name +
                         ", where a dict, bool, int, float, str or bytes is needed");
}

} // namespace

py::dict dictOf(const Tree& tree)
{
    py::dict dict;
    for (const auto& [name, value] : tree)
        dict[py::str(name)] = objectOf(*value);
    return dict;
}

Tree treeOf(const py::dict& dict)
{
    Tree tree;
    for (const auto& [key, value] : dict) {
        if (!py::isinstance<py::str>(key))
            throw py::type_error("a " + std::string(Py_TYPE(key.ptr())->tp_name) +
                                 " as a name, where a str is needed");
        const auto name = key.cast<std::string>();
        tree.set(name, valueOf(name, value));
    }
    return tree;
}

void addStorage(py::module_& module)
{
    module.def(
        "decode_storage",
        [](const py::bytes& text, const std::string& format) {
            using Decoder = exp::StorageDecoder<Tree>;
            if (format != "xml" && format != "ini")
                throw py::value_error("format: '" + format + "', where 'xml' or 'ini' is needed");
            std::istringstream in{std::string(text)};
            const auto [tree, name] = Decoder(format == "xml" ? Decoder::s32Xml : Decoder::s32Ini).decode(in);
            return py::make_tuple(dictOf(tree), name);
        },
        py::arg("text"), py::arg("format") = "xml",
        "decode_storage(text, format=\"xml\") -> (tree, name of the root)\n\n"
        "The bytes of a storage file, \"xml\" or \"ini\", as nested dicts: groups are dicts, values bool, "
        "int, float,\n"
        "str, or bytes for uint8[]. The name is empty for INI text. Error for text that is no storage file "
        "or\n"
        "exceeds its limits.");
}

} // namespace velmo::python

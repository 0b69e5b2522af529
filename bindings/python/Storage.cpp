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

} // namespace

py::dict dictOf(const Tree& tree)
{
    py::dict dict;
    for (const auto& [name, value] : tree)
        dict[py::str(name)] = objectOf(*value);
    return dict;
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

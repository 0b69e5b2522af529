// Values in their binary and their text form: a byte that chooses the type, then the value.

#include "core/datatypes/Variant.h"
#include "fuzz/Fuzz.h"

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

using namespace velmo::exp;

namespace {

const std::string mg_astrTypes[] = {"bool",  "int8",   "uint8", "int16",  "uint16", "int32",   "uint32",
                                    "int64", "uint64", "float", "double", "string", "uint8[]", "group"};

/// What is read from bytes is written as the same bytes.
void fromBytes(const std::string& type, Endian endian, const std::vector<unsigned char>& bytes)
{
    std::size_t consumed = bytes.size() + 1;
    const auto value = Variant::deserialize(type, endian, bytes, consumed);
    std::vector<unsigned char> written(value->serialize(endian, nullptr));
    require(value->getTypeDescriptionName() == type && consumed <= bytes.size() &&
            written.size() == consumed &&
            value->serialize(endian, reinterpret_cast<char*>(written.data())) == consumed &&
            std::equal(written.begin(), written.end(), bytes.begin()));
}

/// What is read from a text is written as a text that means the same.
void fromText(const std::string& type, const std::string& text)
{
    const auto value = Variant::fromString(type, text);
    const auto again = Variant::fromString(type, value->toString());
    const bool isNumber = value->isFloatingPoint() && !std::isnan(value->toDouble());
    require(value->getTypeDescriptionName() == type &&
            (value->equal(again) || (value->isFloatingPoint() && !isNumber)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string& type = mg_astrTypes[data[0] % std::size(mg_astrTypes)];
    const Endian endian = data[0] < 128 ? Endian::Native : Endian::Swapped;
    unlessRefused([&] { fromBytes(type, endian, {data + 1, data + size}); });
    return unlessRefused([&] { fromText(type, std::string(data + 1, data + size)); });
}

#include "core/codecs/StorageDecoder.h"
#include "fuzz/Fuzz.h"

#include <sstream>
#include <string>

using namespace velmo::exp;
using Storage = DataStorage<std::string>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    return unlessRefused([&] {
        const auto [storage, name] = StorageDecoder<Storage>(StorageDecoder<Storage>::s32Ini).decode(in);
        // INI text has no "not a number", so a copy equals its original.
        require(name.empty() && Storage(storage) == storage);
    });
}

#include "core/Exception.h"
#include "core/codecs/StorageDecoder.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace velmo::exp;
using Storage = DataStorage<std::string>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    try {
        const auto [storage, name] = StorageDecoder<Storage>(StorageDecoder<Storage>::s32Xml).decode(in);
        const Storage copy(storage);
        // Both walks go through all of it; a value that is no number equals nothing.
        if (copy.size() != storage.size() || !copy.satisfiesQuery(Storage()))
            std::abort();
    } catch (const Exception&) {
    } catch (const std::logic_error&) { // an element without its name or type
    }
    return 0;
}

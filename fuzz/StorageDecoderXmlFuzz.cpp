#include "core/Exception.h"
#include "core/codecs/StorageDecoder.h"

#include <algorithm>
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
        // The same ids at least; values may differ from themselves, being "not a number".
        if (copy.size() != storage.size() ||
            !std::equal(copy.begin(), copy.end(), storage.begin(),
                        [](const auto& a, const auto& b) { return a.first == b.first; }))
            std::abort();
        static_cast<void>(copy == storage); // a walk through all of it
    } catch (const Exception&) {
    } catch (const std::logic_error&) { // an element without its name or type
    }
    return 0;
}

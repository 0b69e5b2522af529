#include "core/codecs/StorageDecoder.h"
#include "fuzz/Fuzz.h"
#include "fuzz/WellFormed.h"

#include <sstream>
#include <stdexcept>

using namespace velmo::exp;
using Storage = DataStorage<std::string>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string file(reinterpret_cast<const char*>(data), size);
    std::istringstream in(file);
    try {
        const auto [storage, name] = StorageDecoder<Storage>(StorageDecoder<Storage>::s32Xml).decode(in);
        const Storage copy(storage);
        // The same ids at least; values may differ from themselves, being "not a number".
        require(std::equal(copy.begin(), copy.end(), storage.begin(), storage.end(),
                           [](const auto& a, const auto& b) { return a.first == b.first; }));
        static_cast<void>(copy == storage); // a walk through all of it
        require(file.compare(0, 9, "<?storage") == 0 || WellFormed::check(file));
    } catch (const Exception&) {
    } catch (const std::logic_error&) { // an element without its name or type
    }
    return 0;
}

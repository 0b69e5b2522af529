#include "core/codecs/StorageText.h"

#include "core/Exception.h"

#include <algorithm>

namespace velmo::exp {

std::string readUpTo(std::istream& in, std::uint64_t count)
{
    constexpr std::uint64_t chunk = 1 << 16;
    std::string bytes;
    while (bytes.size() < count && in.good()) {
        const std::size_t had = bytes.size();
        const std::size_t wanted = static_cast<std::size_t>(std::min(chunk, count - had));
        bytes.resize(had + wanted);
        in.read(bytes.data() + had, static_cast<std::streamsize>(wanted));
        bytes.resize(had + static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad())
        VELMO_THROW("Inputstream not readable!");
    in.clear(in.rdstate() & ~std::ios::failbit);
    return bytes;
}

std::string readText(std::istream& in)
{
    std::string text = readUpTo(in, StorageLimits::u64Text + 1);
    if (text.size() > StorageLimits::u64Text)
        VELMO_THROW("Storage text exceeds the limit of " + std::to_string(StorageLimits::u64Text) + " bytes");
    return text;
}

void checkDepthOf(const std::string& id)
{
    if (std::count(id.begin(), id.end(), '/') >= StorageLimits::s32Depth)
        VELMO_THROW("Storage id exceeds the limit of " + std::to_string(StorageLimits::s32Depth) +
                    " components");
}

} // namespace velmo::exp

#include "core/codecs/StorageText.h"

#include "core/Exception.h"

#include <algorithm>

namespace velmo::exp {

std::string readUpTo(std::istream& in, std::uint64_t count)
{
    constexpr std::uint64_t chunk = 1 << 16;
    const QuietStream quiet(in);
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

std::string readText(std::istream& in, std::size_t limit, std::string text)
{
    text += readUpTo(in, limit + 1 - std::min(text.size(), limit));
    if (text.size() > limit)
        VELMO_THROW("Storage text exceeds the limit of " + std::to_string(limit) + " bytes");
    return text;
}

void IdCheck::add(std::string_view id, std::size_t groupsAbove)
{
    const auto groups = static_cast<std::size_t>(std::count(id.begin(), id.end(), '/'));
    if (groupsAbove + groups >= StorageLimits::u64Components)
        VELMO_THROW("Storage id exceeds the limit of " + std::to_string(StorageLimits::u64Components) +
                    " components");
    m_u64Groups += groups;
    if (m_u64Groups > StorageLimits::u64Groups)
        VELMO_THROW("Storage ids exceed the limit of " + std::to_string(StorageLimits::u64Groups) +
                    " groups that they name");
}

} // namespace velmo::exp

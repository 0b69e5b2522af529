#include "core/codecs/StorageText.h"

#include "core/Exception.h"

#include <algorithm>

namespace velmo::exp {

std::uint64_t readUpTo(std::istream& in, std::uint64_t count, std::string& bytes)
{
    const QuietStream quiet(in);
    std::uint64_t left = count;
    while (left > 0 && in.good()) {
        const std::size_t had = bytes.size();
        // As much as there is already: what is made room for is zeroed first, and most texts are short.
        const auto chunk = std::clamp<std::uint64_t>(had, 1 << 12, 1 << 16);
        const auto wanted = static_cast<std::size_t>(std::min(chunk, left));
        bytes.resize(had + wanted);
        in.read(bytes.data() + had, static_cast<std::streamsize>(wanted));
        bytes.resize(had + static_cast<std::size_t>(in.gcount()));
        left -= bytes.size() - had;
    }
    if (in.bad())
        VELMO_THROW("Inputstream not readable!");
    in.clear(in.rdstate() & ~std::ios::failbit);
    return count - left;
}

void readText(std::istream& in, std::size_t limit, std::string& text)
{
    readUpTo(in, limit + 1 - std::min(text.size(), limit), text);
    if (text.size() > limit)
        VELMO_THROW("Storage text exceeds the limit of " + std::to_string(limit) + " bytes");
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

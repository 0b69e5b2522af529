// Not installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace velmo::exp {

/// What a storage file may hold at most, so that none can exhaust stack, time or memory.
struct StorageLimits
{
    static constexpr std::size_t u64Ini = std::size_t{64} << 20;    ///< bytes of INI text
    static constexpr std::size_t u64Xml = std::size_t{16} << 20;    ///< bytes of XML text
    static constexpr std::size_t u64Values = std::size_t{64} << 20; ///< bytes of binary values beside it
    static constexpr int s32Nodes = 250000; ///< elements, texts, comments and instructions of XML text
    static constexpr int s32Keys = 100000;  ///< keys and sections of INI text
    static constexpr std::size_t u64Components = 500; ///< of an id
    static constexpr std::size_t u64Groups = 100000;  ///< named by ids in front of their last component
    static constexpr int s32Depth = 500;              ///< nested elements, the root counted
    static constexpr int s32Attributes = 256;         ///< of one element
    static constexpr int s32FreeParts = 100000;       ///< nodes and attributes of any XML text; beyond, ...
    static constexpr int s32BytesPerPart = 8;         ///< ... one for every so many bytes
};

/// Lets a stream be read to its end whatever its exception mask says. The mask is as before afterwards;
/// of the state that reading left, what the mask would throw for is cleared.
class QuietStream
{
public:
    explicit QuietStream(std::istream& in) : m_oStream(in), m_eMask(in.exceptions())
    {
        in.exceptions(std::ios::goodbit);
    }
    ~QuietStream()
    {
        m_oStream.clear(m_oStream.rdstate() & ~m_eMask);
        m_oStream.exceptions(m_eMask);
    }
    QuietStream(const QuietStream&) = delete;
    QuietStream& operator=(const QuietStream&) = delete;

private:
    std::istream& m_oStream;
    std::ios::iostate m_eMask;
};

/// Appends up to `count` bytes from where the stream stands to `bytes`; the end of the stream is no failure.
/// Memory grows with what is there, not with `count`.
/// @return how many bytes that were
/// @throws Exception  if the stream can not be read: a directory opened as a file
std::uint64_t readUpTo(std::istream& in, std::uint64_t count, std::string& bytes);

/// Appends the rest of a stream to `text`.
/// @throws Exception  as readUpTo, and if the whole is more than `limit` bytes
void readText(std::istream& in, std::size_t limit, std::string& text);

/// Counts the groups that the ids of a file ask for: a short text could ask for very many.
class IdCheck
{
public:
    /// @param groupsAbove  what the id does not name: it is looked up inside these
    /// @throws Exception  if the path to the id or the ids so far exceed their limit
    void add(std::string_view id, std::size_t groupsAbove = 0);

private:
    std::size_t m_u64Groups = 0;
};

} // namespace velmo::exp

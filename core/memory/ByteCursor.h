// Not installed.
#pragma once

#include "core/Exception.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmo::exp {

/// Bytes ended before what was to be read from them.
class EndOfBytes : public Exception
{
public:
    using Exception::Exception;
};

/// Walks over bytes that came from outside; does not own them. A read past the end throws
/// EndOfBytes and leaves the cursor where it was.
class ByteCursor
{
public:
    ByteCursor(const std::uint8_t* begin, std::size_t count) : m_pNext(begin), m_pEnd(begin + count) {}

    std::size_t left() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }

    /// The next byte without taking it, or -1 at the end.
    int peek() const { return m_pNext == m_pEnd ? -1 : *m_pNext; }

    const std::uint8_t* take(std::size_t count)
    {
        // Not m_pNext + count > m_pEnd: with a count from a header that sum can wrap.
        if (count > left())
            throw EndOfBytes("Need " + std::to_string(count) + " bytes, " + std::to_string(left()) + " left!",
                             VELMO_LOCATION);
        m_pNext += count;
        return m_pNext - count;
    }

private:
    const std::uint8_t* m_pNext;
    const std::uint8_t* m_pEnd;
};

} // namespace velmo::exp

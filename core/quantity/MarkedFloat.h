#pragma once

#include "core/Exception.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace velmo::exp {

/// A float whose three lowest mantissa bits carry a mark instead of precision: four bytes, about six decimal
/// digits. The mark never shows in the value: a marked 100 reads as 100, a marked infinity as infinity.
class MarkedFloat
{
public:
    static constexpr unsigned u32MaxMark = 7;

    /// Zero, unmarked.
    MarkedFloat() = default;

    /// The value without its three lowest mantissa bits, unmarked.
    MarkedFloat(float value)
    {
        // One pattern for everything that is not a number: with only low bits set, clearing them would make
        // it an infinity.
        if (value != value)
            m_u32Bits = u32NotANumber;
        else
            std::memcpy(&m_u32Bits, &value, sizeof value);
        m_u32Bits &= ~u32MaxMark;
    }

    /// The value without the mark.
    operator float() const
    {
        const std::uint32_t bits = m_u32Bits & ~u32MaxMark;
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    unsigned mark() const { return m_u32Bits & u32MaxMark; }

    /// @param mark  0..7
    /// @throws Exception  for anything else; the old mark stays
    void setMark(unsigned mark)
    {
        if (mark > u32MaxMark)
            VELMO_THROW("Mark " + std::to_string(mark) + " is beyond 7!");
        m_u32Bits = (m_u32Bits & ~u32MaxMark) | mark;
    }

    /// Comparisons ignore the marks. What is not a number equals nothing, not even itself.
    friend bool operator==(MarkedFloat a, MarkedFloat b) { return float(a) == float(b); }
    friend bool operator!=(MarkedFloat a, MarkedFloat b) { return !(a == b); }
    /// A plain number is first made a MarkedFloat: rounded to a float, its lowest bits cleared.
    template <class T>
    friend std::enable_if_t<std::is_arithmetic_v<T>, bool> operator==(MarkedFloat a, T b)
    {
        return a == MarkedFloat(static_cast<float>(b));
    }
    template <class T>
    friend std::enable_if_t<std::is_arithmetic_v<T>, bool> operator!=(MarkedFloat a, T b)
    {
        return !(a == b);
    }
    template <class T>
    friend std::enable_if_t<std::is_arithmetic_v<T>, bool> operator==(T a, MarkedFloat b)
    {
        return b == a;
    }
    template <class T>
    friend std::enable_if_t<std::is_arithmetic_v<T>, bool> operator!=(T a, MarkedFloat b)
    {
        return !(a == b);
    }

private:
    static constexpr std::uint32_t u32NotANumber = 0x7fc00000;

    std::uint32_t m_u32Bits = 0;
};

static_assert(sizeof(MarkedFloat) == 4, "stored and passed on as four bytes");

} // namespace velmo::exp

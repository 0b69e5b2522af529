#pragma once

#include <utility>

namespace velmo::exp {

/// A value that what was moved from holds as it was at first. With members of this kind a class needs no line
/// about its copies and moves.
/// @tparam first  makes that first value
template <class T, T (*first)()>
class ResetByMove
{
public:
    ResetByMove() = default;

    ResetByMove(const ResetByMove& other) = default;
    ResetByMove(ResetByMove&& other) noexcept : m_oValue(std::exchange(other.m_oValue, first())) {}
    ResetByMove& operator=(ResetByMove other) noexcept
    {
        m_oValue = std::move(other.m_oValue);
        return *this;
    }
    ~ResetByMove() = default;

    T& operator*() { return m_oValue; }

private:
    T m_oValue = first();
};

} // namespace velmo::exp

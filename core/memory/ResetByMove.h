#pragma once

#include <utility>

namespace velmo::exp {

template <class T>
T valueInitialized()
{
    return T();
}

/// A value that what was moved from holds as it was at first. With members of this kind a class needs no line
/// about its copies and moves.
/// @tparam first  makes that first value
template <class T, T (*first)() = valueInitialized<T>>
class ResetByMove
{
public:
    ResetByMove() = default;
    explicit ResetByMove(T value) : m_oValue(std::move(value)) {}

    ResetByMove(const ResetByMove& other) = default;
    ResetByMove(ResetByMove&& other) noexcept : m_oValue(std::exchange(other.m_oValue, first())) {}
    ResetByMove& operator=(ResetByMove other) noexcept
    {
        m_oValue = std::move(other.m_oValue);
        return *this;
    }
    ~ResetByMove() = default;

    T& operator*() { return m_oValue; }
    const T& operator*() const { return m_oValue; }

private:
    T m_oValue = first();
};

} // namespace velmo::exp

#pragma once

#include <string>

namespace velmo::exp::quantity {

/// A temperature in degrees Celsius.
///
/// @tparam T  what holds the number: a floating-point type or MarkedFloat
template <class T>
class Temperature
{
public:
    /// Zero.
    Temperature() = default;
    explicit Temperature(T celsius) : m_value(celsius) {}

    T value() const { return m_value; }

    friend bool operator==(const Temperature& a, const Temperature& b) { return a.m_value == b.m_value; }
    friend bool operator!=(const Temperature& a, const Temperature& b) { return !(a == b); }

    static std::string name() { return "Temperature"; }
    static std::string unit() { return "°C"; }

private:
    T m_value{};
};

} // namespace velmo::exp::quantity

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
    explicit Temperature(T celsius) : m_value(celsius) {}

    T value() const { return m_value; }

    static std::string name() { return "Temperature"; }
    static std::string unit() { return "°C"; }

private:
    T m_value;
};

} // namespace velmo::exp::quantity

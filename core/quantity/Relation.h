#pragma once

#include <string>

namespace velmo::exp::quantity {

/// A share of a whole, in percent.
///
/// @tparam T  what holds the number: a floating-point type or MarkedFloat
template <class T>
class Relation
{
public:
    /// Zero.
    Relation() = default;
    explicit Relation(T percent) : m_value(percent) {}

    T value() const { return m_value; }

    friend bool operator==(const Relation& a, const Relation& b) { return a.m_value == b.m_value; }
    friend bool operator!=(const Relation& a, const Relation& b) { return !(a == b); }

    static std::string name() { return "Relation"; }
    static std::string unit() { return "%"; }

private:
    T m_value{};
};

} // namespace velmo::exp::quantity

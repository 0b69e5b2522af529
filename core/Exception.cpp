#include "core/Exception.h"

#include <utility>

namespace velmo::exp {

Exception::Exception(std::string message, std::string location)
    : m_strMessage(std::move(message)), m_strLocation(std::move(location))
{}

// Here, so that the type's run-time information has one home and is caught across library borders.
Exception::~Exception() = default;

} // namespace velmo::exp

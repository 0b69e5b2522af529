#pragma once

#include "core/Export.h"

#include <exception>
#include <string>

namespace velmo::exp {

/// The one error type of the library. Whatever is refused is refused with this, before any output changes.
class VELMO_API Exception : public std::exception
{
public:
    /// @param message   what went wrong, for a person; names the value and the limit
    /// @param location  where it was thrown: "file: line: function(..)" and a line end
    Exception(std::string message, std::string location);
    ~Exception() override;

    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;

    /// Exactly the message.
    const char* what() const noexcept override { return m_strMessage.c_str(); }

    const std::string& location() const noexcept { return m_strLocation; }

private:
    std::string m_strMessage;
    std::string m_strLocation;
};

} // namespace velmo::exp

/// The place where the macro stands, as Exception takes it.
#define VELMO_LOCATION (std::string(__FILE__) + ": " + std::to_string(__LINE__) + ": " + __func__ + "(..)\n")

/// Throws Exception with `message` and the place where the macro stands.
#define VELMO_THROW(message) throw ::velmo::exp::Exception((message), VELMO_LOCATION)

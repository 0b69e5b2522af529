// Not installed.
#pragma once

#include <string>
#include <typeinfo>

namespace velmo::exp {

/// The run-time name; a leading '*' only says how names of that type are to be compared.
inline std::string nameOf(const std::type_info& type)
{
    const char* const name = type.name();
    return *name == '*' ? name + 1 : name;
}

} // namespace velmo::exp

#pragma once

#include <stdexcept>

namespace thermal {

/// What the person at the terminal can put right: a wrong argument, a file that cannot be used. Its text is
/// one line that names the argument or file; the program prints it and ends with code 2.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Everything went well but for the result, which is hardly true; nothing is written. Ends with code 3.
class DoubtfulResult : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace thermal

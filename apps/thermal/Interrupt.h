#pragma once

#include <stdexcept>

namespace thermal {

/// Thrown by checkInterrupt, so that an interrupted command takes back what it has half written.
class Interrupted : public std::runtime_error
{
public:
    static constexpr int s32ExitCode = 130; ///< 128 + SIGINT, what shells expect

    Interrupted() : std::runtime_error("interrupted") {}
};

/// From now on SIGINT and SIGTERM are noted instead of ending the program at once. A second one ends it.
void listenForInterrupts();

/// Throws Interrupted if there was one; called between frames.
void checkInterrupt();

} // namespace thermal

#pragma once

namespace thermal {

/// The whole program. Returns the exit code: 0, or 2 after one line on standard error that says what is
/// wrong with the arguments or files. Throws nothing.
int runProgram(int argc, const char* const* argv);

} // namespace thermal

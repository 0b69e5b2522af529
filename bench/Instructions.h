#pragma once

#include "bench/Report.h"

/// Instructions that one run of each form executes. They are the same on every machine, so that bars can be
/// tight.
/// @throws std::runtime_error  unless qemu runs the program, with the plugin of bench/count
Costs countInstructions(const Job& job);

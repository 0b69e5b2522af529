#pragma once

#include <functional>

/// What 100 calls allocate after the first two. For programs that link Allocations.cpp.
long allocationsOf(const std::function<void()>& frame);

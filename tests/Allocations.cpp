#include "tests/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};

} // namespace

// Those of the whole program, which is why these tests have one of their own: matrices come through here as
// well, with their headers. The other forms of both call these.
void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

long allocationsOf(const std::function<void()>& frame)
{
    frame();
    frame();
    const long before = allocations;
    for (int n = 0; n < 100; ++n)
        frame();
    return allocations - before;
}

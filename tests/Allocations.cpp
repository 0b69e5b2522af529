#include "tests/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};

void* countedOrNull(std::size_t size) noexcept
{
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

void* counted(std::size_t size)
{
    if (void* memory = countedOrNull(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

// Those of the whole program, which is why these tests have one of their own: matrices come through here as
// well, with their headers.
void* operator new(std::size_t size)
{
    return counted(size);
}

void* operator new[](std::size_t size)
{
    return counted(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return countedOrNull(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return countedOrNull(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
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

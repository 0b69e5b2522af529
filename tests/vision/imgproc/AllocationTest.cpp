// Filters run at camera speed for as long as the camera does: once they have seen a frame of a stream they
// must not allocate for the next ones.

#include "tests/vision/imgproc/Filters.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
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

namespace {

/// What 100 frames allocate after the first two.
long allocationsOf(const std::function<void()>& frame)
{
    frame();
    frame();
    const long before = allocations;
    for (int n = 0; n < 100; ++n)
        frame();
    return allocations - before;
}

} // namespace

TEST(Allocations, AreCounted)
{
    EXPECT_GE(allocationsOf([] { cv::Mat_<short> frame(24, 32); }), 100);
}

TEST(Allocations, DoNotHappenPerFrame)
{
    cv::RNG random(7);
    for (const FilterKind& kind : everyFilter()) {
        const auto filter = kind.make();
        cv::Mat in(180, 240, kind.type), out;
        random.fill(in, cv::RNG::UNIFORM, 0, 101);
        EXPECT_EQ(allocationsOf([&] { filter->process(in, out); }), 0) << kind.name;
    }
}

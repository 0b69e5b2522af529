// Filters run at camera speed for as long as the camera does: once they have seen a frame of a stream they
// must not allocate for the next ones.

#include "vision/imgproc/DownSize.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"
#include "vision/imgproc/TemporalNoiseReductionRef.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

using namespace velmo::exp::vision;

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
    cv::Mat_<short> in(180, 240), out, small, smaller;
    cv::randu(in, 8000, 8060);
    cv::Mat_<unsigned short> unsignedFrame(180, 240, 8000);

    StaticPatternRemover pattern(30, 31, 31);
    EXPECT_EQ(allocationsOf([&] { pattern.process(in, out); }), 0);
    for (const int gain : {0, 8}) {
        SpatialNoiseRemover spatial(gain);
        EXPECT_EQ(allocationsOf([&] { spatial.process(in, out); }), 0) << "gain " << gain;
    }
    for (const unsigned short factor : {1800, 2048}) {
        TemporalNoiseReduction<short> temporal(16, factor);
        TemporalNoiseReduction<unsigned short> temporalUnsigned(16, factor);
        TemporalNoiseReductionRef<short> reference(16, factor);
        TemporalNoiseReductionRef<unsigned short> referenceUnsigned(16, factor);
        EXPECT_EQ(allocationsOf([&] { temporal.process(in); }), 0) << "factor " << factor;
        EXPECT_EQ(allocationsOf([&] { temporalUnsigned.process(unsignedFrame); }), 0) << "factor " << factor;
        EXPECT_EQ(allocationsOf([&] { reference.process(in); }), 0) << "factor " << factor;
        EXPECT_EQ(allocationsOf([&] { referenceUnsigned.process(unsignedFrame); }), 0) << "factor " << factor;
    }
    EXPECT_EQ(allocationsOf([&] { DownSize::resize240To160(in, small); }), 0);
    EXPECT_EQ(allocationsOf([&] { DownSize::resize240To120(in, smaller); }), 0);
}

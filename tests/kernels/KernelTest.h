#pragma once

#include "core/Forms.h"
#include "tests/Support.h"

/// What a form left behind: the bytes of everything it may write to, and of what lies around.
struct Left
{
    template <class T>
    Left& operator<<(const T& value)
    {
        if constexpr (std::is_arithmetic_v<T>)
            add(&value, &value + 1);
        else if constexpr (std::is_base_of_v<cv::Mat, T>) // a view with all that it is a part of
            add(value.datastart, value.dataend);
        else
            add(value.data(), value.data() + value.size());
        return *this;
    }

    void add(const void* begin, const void* end)
    {
        bytes.insert(bytes.end(), static_cast<const unsigned char*>(begin),
                     static_cast<const unsigned char*>(end));
    }

    std::vector<unsigned char> bytes;
};

/// Room for `count` values between guards.
template <class T>
struct Guarded
{
    static constexpr std::size_t guard = 64;

    explicit Guarded(std::size_t count) : all(count + 2 * guard, static_cast<T>(0xA5)) {}
    T* data() { return all.data() + guard; }

    std::vector<T> all;
};

/// A loop, and how often inputs are drawn for it.
struct KernelCase
{
    std::string name;
    int rounds;
    std::function<void(Random&, int)> round;

    friend void PrintTo(const KernelCase& kernel, std::ostream* out) { *out << kernel.name; }
};

/// `run` draws the input of a round, runs a form on it and returns what that left.
template <class Function, class Run>
KernelCase kernel(const velmo::exp::Forms<Function>& forms, int rounds, Run run, const char* variant = "")
{
    return {std::string(forms.name) + variant, rounds, [&forms, run](Random& random, int round) {
                Random again = random; // both forms get the same input
                const auto expected = run(again, round, *forms.plain).bytes,
                           actual = run(random, round, *forms.fast).bytes;
                ASSERT_EQ(actual.size(), expected.size());
                const auto place = std::mismatch(actual.begin(), actual.end(), expected.begin()).first;
                ASSERT_EQ(place - actual.begin(), static_cast<std::ptrdiff_t>(actual.size()))
                    << "the first byte that differs";
            }};
}

/// Every loop below core/, vision/ and camera/, a function for each of their kernel headers.
std::vector<KernelCase> badPixelKernels();
std::vector<KernelCase> blobKernels();
std::vector<KernelCase> colourKernels();
std::vector<KernelCase> denoiseKernels();
std::vector<KernelCase> noiseKernels();
std::vector<KernelCase> paletteKernels();

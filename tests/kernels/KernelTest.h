#pragma once

#include "core/Forms.h"
#include "tests/Support.h"

/// Where inputs come from.
class Random
{
public:
    explicit Random(unsigned seed) : m_oGenerator(seed) {}

    int operator()(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_oGenerator); }
    bool oneIn(int times) { return (*this)(1, times) == 1; }

    template <class T>
    T pick(std::initializer_list<T> values)
    {
        return values.begin()[(*this)(0, static_cast<int>(values.size()) - 1)];
    }

    template <class T>
    std::vector<T> values(std::size_t count, int low = std::numeric_limits<T>::min(),
                          int high = std::numeric_limits<T>::max())
    {
        std::vector<T> all(count);
        std::generate(all.begin(), all.end(), [&] { return static_cast<T>((*this)(low, high)); });
        return all;
    }

    /// A part of a larger matrix, so that its rows are padded.
    template <class T>
    cv::Mat_<T> frame(cv::Size size, int low, int high)
    {
        cv::Mat_<T> large(size.height + 2, size.width + 5, T(7));
        cv::Mat_<T> part = large(cv::Rect({2, 1}, size));
        std::generate(part.begin(), part.end(), [&] { return static_cast<T>((*this)(low, high)); });
        return part;
    }

private:
    std::mt19937 m_oGenerator;
};

/// What a form left behind: the bytes of everything it may write to, and of what lies around.
class Left
{
public:
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

    const std::vector<unsigned char>& bytes() const { return m_aBytes; }

private:
    void add(const void* begin, const void* end)
    {
        m_aBytes.insert(m_aBytes.end(), static_cast<const unsigned char*>(begin),
                        static_cast<const unsigned char*>(end));
    }

    std::vector<unsigned char> m_aBytes;
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

/// `draw` makes the input of a round: a function that runs one form on it and returns what it left.
template <class Function, class Draw>
KernelCase kernel(const velmo::exp::Forms<Function>& forms, int rounds, Draw draw, const char* variant = "")
{
    return {std::string(forms.name) + variant, rounds, [&forms, draw](Random& random, int round) {
                const auto run = draw(random, round);
                const auto expected = run(*forms.plain).bytes(), actual = run(*forms.fast).bytes();
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

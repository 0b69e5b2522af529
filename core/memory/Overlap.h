// Not installed.
#pragma once

#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>

namespace velmo::exp {

/// Where the bytes of an image lie; rows may be padded. By addresses: two matrices made over one buffer know
/// nothing of each other.
struct MemoryArea
{
    MemoryArea(const void* begin, std::size_t bytes)
        : u64Begin(reinterpret_cast<std::uintptr_t>(begin)), u64Rows(bytes > 0 ? 1 : 0), u64Width(bytes),
          u64Step(bytes)
    {}
    explicit MemoryArea(const cv::Mat& image)
        : u64Begin(reinterpret_cast<std::uintptr_t>(image.data)),
          u64Rows(image.empty() ? 0 : static_cast<std::size_t>(image.rows)),
          u64Width(static_cast<std::size_t>(image.cols) * image.elemSize()),
          u64Step(u64Rows > 1 ? image.step[0] : u64Width)
    {}

    std::uintptr_t end() const { return u64Begin + (u64Rows - 1) * u64Step + u64Width; }

    std::uintptr_t u64Begin;
    std::size_t u64Rows, u64Width, u64Step;
};

/// Whether two areas have a byte in common. Sure of areas with the same step, regions of one image; of
/// others it may say so where their rows only lie between each other.
inline bool overlap(const MemoryArea& a, const MemoryArea& b)
{
    if (a.u64Begin > b.u64Begin)
        return overlap(b, a);
    if (a.u64Rows == 0 || b.u64Rows == 0 || b.u64Begin >= a.end())
        return false;
    if (a.u64Step != b.u64Step)
        return true;
    // The first row of b begins in some row of a, behind its pixels or not, and may reach into the next.
    const std::size_t distance = b.u64Begin - a.u64Begin, column = distance % a.u64Step;
    return column < a.u64Width || (column + b.u64Width > a.u64Step && distance / a.u64Step + 1 < a.u64Rows);
}

/// What to read instead of `in` while `out` is written: `in` itself where the two are apart or exactly the
/// same pixels, which a filter can do in place; a copy where writing one pixel might change another that is
/// still to be read.
template <class Image>
Image untouched(const Image& in, const cv::Mat& out)
{
    const bool inPlace = in.data == out.data && in.step == out.step && in.size() == out.size() &&
                         in.elemSize() == out.elemSize();
    return !inPlace && overlap(MemoryArea(in), MemoryArea(out)) ? Image(in.clone()) : in;
}

} // namespace velmo::exp

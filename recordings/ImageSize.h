#pragma once

#include <opencv2/core.hpp>

#include <cstdint>
#include <string>

namespace velmo::recordings {

inline constexpr int s32MaxImageSide = 16384;

/// Images have sides of 1 to s32MaxImageSide.
/// @throws Exception  that names the file, the size and the limit
void requireImageSize(const std::string& name, std::uint64_t width, std::uint64_t height);

/// What a file of many images asks of each: the size and type of the first.
class OneShape
{
public:
    /// @throws Exception  that names the file and both sizes
    void require(const cv::Mat& image, const std::string& name);

    cv::Size size() const { return m_oSize; }
    int type() const { return m_s32Type; }

private:
    cv::Size m_oSize;
    int m_s32Type = -1;
};

} // namespace velmo::recordings

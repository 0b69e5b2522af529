#include "recordings/ImageSize.h"

#include "core/Exception.h"

namespace velmo::recordings {

void requireImageSize(const std::string& name, std::uint64_t width, std::uint64_t height)
{
    if (width < 1 || height < 1 || width > s32MaxImageSide || height > s32MaxImageSide)
        VELMO_THROW(name + ": " + std::to_string(width) + "x" + std::to_string(height) +
                    " pixels, sides are 1 to " + std::to_string(s32MaxImageSide));
}

void OneShape::require(const cv::Mat& image, const std::string& name)
{
    if (m_s32Type < 0) {
        m_s32Type = image.type();
        m_oSize = image.size();
    }
    if (image.size() != m_oSize || image.type() != m_s32Type)
        VELMO_THROW(name + ": takes images of one size: one of " + std::to_string(image.cols) + "x" +
                    std::to_string(image.rows) + " came behind one of " + std::to_string(m_oSize.width) +
                    "x" + std::to_string(m_oSize.height));
}

} // namespace velmo::recordings

#include "recordings/ByteOrder.h"

#include "core/datatypes/Endian.h"

#include <algorithm>
#include <cstddef>

namespace velmo::recordings {
namespace {

template <std::size_t bytes>
void turn(cv::Mat& image)
{
    const unsigned char* const end = image.data + image.total() * image.elemSize();
    for (unsigned char* value = image.data; value != end; value += bytes)
        std::reverse(value, value + bytes);
}

} // namespace

cv::Mat inOrder(const cv::Mat& image, bool bigEndianFile)
{
    if (image.elemSize1() == 1 || bigEndianFile == exp::Endianness::isBigEndianSystem())
        return image;
    cv::Mat turned = image.clone();
    if (image.elemSize1() == 2)
        turn<2>(turned);
    else if (image.elemSize1() == 4)
        turn<4>(turned);
    else
        turn<8>(turned);
    return turned;
}

} // namespace velmo::recordings

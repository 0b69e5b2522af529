#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// Shrinks a 240 x 180 frame by a fixed ratio, first along the rows, then along the columns. Every division
/// rounds toward zero.
class VELMO_API DownSize
{
public:
    /// To 160 x 120: three pixels become two, each two thirds of its nearer one and a third of the middle
    /// one.
    ///
    /// @param in   180 rows x 240 cols; rows may be padded
    /// @param out  becomes 120 rows x 160 cols; reused if it has that size already. May share pixels with
    /// `in`.
    /// @throws Exception  if `in` is of another size; `out` is untouched then
    static void resize240To160(cv::Mat_<short>& in, cv::Mat_<short>& out);

    /// To 120 x 90: the mean of two by two pixels. As above in all else.
    static void resize240To120(cv::Mat_<short>& in, cv::Mat_<short>& out);
};

} // namespace velmo::exp::vision

#pragma once

#include <opencv2/core.hpp>

#include <utility>

namespace velmo::exp {

/// A matrix that belongs to its holder: a copy has pixels of its own, and what was moved from is empty. With
/// members of this kind a class copies deeply and moves cheaply without a line about it.
template <class T>
class DeepMat : public cv::Mat_<T>
{
public:
    DeepMat() = default;
    /// Takes a matrix as it is, without a copy of its pixels.
    DeepMat(cv::Mat_<T> matrix) : cv::Mat_<T>(std::move(matrix)) {}

    DeepMat(const DeepMat& other) : cv::Mat_<T>(other.clone()) {}
    DeepMat(DeepMat&& other) noexcept : cv::Mat_<T>(std::exchange(other.base(), cv::Mat_<T>())) {}
    DeepMat& operator=(DeepMat other) noexcept
    {
        base() = std::move(other.base());
        return *this;
    }
    ~DeepMat() = default;

private:
    cv::Mat_<T>& base() { return *this; }
};

} // namespace velmo::exp

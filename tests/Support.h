#pragma once

#include "core/Exception.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <random>
#include <string>
#include <utility>

/// What several families need to state their expectations.

/// What a call is refused with: the message, and the function that its location names.
struct Refusal
{
    std::string message = "nothing thrown";
    std::string function;

    friend bool operator==(const Refusal& a, const Refusal& b)
    {
        return a.message == b.message && a.function == b.function;
    }
    friend bool operator!=(const Refusal& a, const Refusal& b) { return !(a == b); }
    friend std::ostream& operator<<(std::ostream& out, const Refusal& refusal)
    {
        return out << '"' << refusal.message << "\" in " << refusal.function;
    }
};

template <class Call>
Refusal refusal(Call call)
{
    try {
        call();
    } catch (const velmo::exp::Exception& error) {
        const std::string& location = error.location();
        const std::size_t name = location.rfind(": ") + 2;
        return {error.what(), location.substr(name, location.rfind("(..)\n") - name)};
    }
    return {};
}

/// Whether two matrices have the same size, type and bytes.
inline bool same(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() &&
           (a.empty() || cv::norm(a.reshape(1), b.reshape(1), cv::NORM_INF) == 0);
}

/// A matrix of values from `low` to `high`, both included.
template <class T>
cv::Mat_<T> randomMat(cv::Size size, int low, int high, std::mt19937& random)
{
    std::uniform_int_distribution<int> value(low, high);
    cv::Mat_<T> matrix(size);
    for (T& element : matrix)
        element = static_cast<T>(value(random));
    return matrix;
}

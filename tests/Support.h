#pragma once

#include "core/Exception.h"
#include "tests/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// What all tests need to state their expectations.

using testing::ElementsAre;
using testing::HasSubstr;
using velmo::exp::Exception;

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

template <class Call, class... Given>
Refusal refusal(Call call, const Given&... given)
{
    try {
        call(given...);
    } catch (const Exception& error) {
        const std::string& location = error.location();
        const std::size_t name = location.rfind(": ") + 2;
        return {error.what(), location.substr(name, location.rfind("(..)\n") - name)};
    }
    return {};
}

/// The bytes of a file; none if there is no such file.
inline std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Whether two matrices have the same size, type and bytes.
inline bool same(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() &&
           (a.empty() || cv::norm(a.reshape(1), b.reshape(1), cv::NORM_INF) == 0);
}

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

/// A matrix of what `value` says of each row and column.
template <class T, class Value>
cv::Mat_<T> matrixOf(cv::Size size, Value value)
{
    cv::Mat_<T> matrix(size);
    for (int row = 0; row < size.height; ++row)
        for (int column = 0; column < size.width; ++column)
            matrix(row, column) = cv::saturate_cast<T>(value(row, column));
    return matrix;
}

/// Each row is refused with a message that holds its words.
/// @param call  takes what is given in a row, all but the words
template <class... Given, class Call>
void expectRefused(const std::vector<std::tuple<Given..., const char*>>& rows, Call call)
{
    for (const auto& row : rows)
        std::apply(
            [&](const Given&... given, const char* words) {
                EXPECT_THAT(refusal(call, given...).message, HasSubstr(words)) << testing::PrintToString(row);
            },
            row);
}

/// A test with files, in a folder that is gone afterwards.
struct FilesTest : testing::Test
{
    std::string path(const std::string& name) const { return folder.path() / name; }

    /// Writes a file, and the folders above it; returns its path.
    std::string put(const std::string& name, const std::string& bytes) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string bytes(const std::string& name) const { return contentOf(path(name)); }

    TemporaryFolder folder;
};

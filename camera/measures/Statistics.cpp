#include "camera/measures/Statistics.h"

#include <algorithm>
#include <vector>

namespace velmo::camera {
namespace {

constexpr double dMadToDeviation = 1.4826; ///< of the normal distribution

std::vector<double> elementsOf(const cv::Mat_<double>& values)
{
    return std::vector<double>(values.begin(), values.end());
}

} // namespace

double medianOf(const cv::Mat_<double>& values)
{
    std::vector<double> elements = elementsOf(values);
    const auto middle = elements.begin() + static_cast<std::ptrdiff_t>(elements.size() / 2);
    std::nth_element(elements.begin(), middle, elements.end());
    if (elements.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(elements.begin(), middle)) / 2;
}

double quantileOf(const cv::Mat_<double>& values, double share)
{
    std::vector<double> elements = elementsOf(values);
    const auto place =
        elements.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(elements.size() - 1));
    std::nth_element(elements.begin(), place, elements.end());
    return *place;
}

double robustDeviation(const cv::Mat_<double>& values)
{
    return dMadToDeviation * medianOf(cv::Mat_<double>(cv::abs(values - medianOf(values))));
}

} // namespace velmo::camera

#pragma once

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace thermal {

// Reads what people type as option values. Nothing but a whole, complete number is a number; whatever is
// refused is a UsageError that begins with `what`, names the text and says what would be right.

/// The parts of `text` between the separators; one more than there are separators, parts may be empty.
std::vector<std::string> split(const std::string& text, char separator);

/// A whole number from `low` to `high`.
int parseInt(const std::string& text, const std::string& what, int low, int high);

/// A number from `low` to `high`, fractions allowed.
double parseNumber(const std::string& text, const std::string& what, double low, double high);

/// `WxH`, both from 1 to 16384.
cv::Size parseSize(const std::string& text, const std::string& what);

/// `RRGGBB` in hexadecimal digits.
unsigned parseColour(const std::string& text, const std::string& what);

} // namespace thermal

#include "camera/settings/Parse.h"

#include "apps/thermal/Error.h"

#include <charconv>
#include <sstream>

namespace thermal {
namespace {

// The largest frame that is allocated before a byte of it has been read: 512 MiB.
constexpr int s32MaxSide = 16384;

/// The whole of `text` as a number of type T.
template <class T, class... Form>
bool convert(const std::string& text, T& value, Form... form)
{
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, form...);
    return error == std::errc() && stopped == end && !text.empty();
}

[[noreturn]] void refuse(const std::string& text, const std::string& what, const std::string& wanted)
{
    throw UsageError(what + ": '" + text + "' is not " + wanted);
}

template <class T>
std::string fromTo(const char* kind, T low, T high)
{
    std::ostringstream text;
    text << kind << " from " << low << " to " << high;
    return text.str();
}

} // namespace

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1)
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

int parseInt(const std::string& text, const std::string& what, int low, int high)
{
    int value = 0;
    if (!convert(text, value) || value < low || value > high)
        refuse(text, what, fromTo("a whole number", low, high));
    return value;
}

double parseNumber(const std::string& text, const std::string& what, double low, double high)
{
    double value = 0;
    // Compared so that a NaN is refused too.
    if (!convert(text, value) || !(value >= low && value <= high))
        refuse(text, what, fromTo("a number", low, high));
    return value;
}

cv::Size parseSize(const std::string& text, const std::string& what)
{
    const std::vector<std::string> parts = split(text, 'x');
    if (parts.size() != 2)
        refuse(text, what, "a size like 160x120");
    return {parseInt(parts[0], what, 1, s32MaxSide), parseInt(parts[1], what, 1, s32MaxSide)};
}

unsigned parseColour(const std::string& text, const std::string& what)
{
    unsigned colour = 0;
    if (text.size() != 6 || !convert(text, colour, 16))
        refuse(text, what, "a colour of six hexadecimal digits RRGGBB");
    return colour;
}

} // namespace thermal

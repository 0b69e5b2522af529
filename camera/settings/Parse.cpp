#include "camera/settings/Parse.h"

#include "core/Exception.h"
#include "core/memory/MemoryAcsii.h"

#include <array>
#include <charconv>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace velmo::camera {
namespace {

using velmo::exp::MemoryAcsii;

// The largest frame that is allocated before a byte of it has been read: 512 MiB.
constexpr int s32MaxSide = 16384;

[[noreturn]] void refuse(const std::string& text, const std::string& what, const std::string& wanted)
{
    VELMO_THROW(what + ": '" + text + "' is not " + wanted);
}

std::string fromTo(const std::string& kind, const Field& field)
{
    std::ostringstream text;
    text << kind << " from " << field.low << " to " << field.high;
    return text.str();
}

double parseHexadecimal(const std::string& text, const std::string& what)
{
    unsigned colour = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, colour, 16);
    if (text.size() != 6 || error != std::errc() || stopped != end)
        refuse(text, what, "a colour of six hexadecimal digits RRGGBB");
    return colour;
}

double parseField(const std::string& text, const std::string& what, const Field& field)
{
    if (field.kind == Field::Kind::Colour)
        return parseHexadecimal(text, what);
    const bool percentile = field.kind == Field::Kind::Percentile;
    std::int64_t whole = 0;
    double value = std::nan("");
    if (field.kind == Field::Kind::Whole) {
        if (MemoryAcsii::parse(text, whole))
            value = static_cast<double>(whole);
    } else if (!percentile || text.substr(0, 1) == "p") {
        MemoryAcsii::parse(text.substr(percentile ? 1 : 0), value);
    }
    // Compared so that a NaN is refused too.
    if (!(value >= field.low && value <= field.high))
        refuse(text, what,
               fromTo(field.kind == Field::Kind::Whole ? "a whole number"
                      : percentile                     ? "a percentile like p1,"
                                                       : "a number",
                      field));
    return value;
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

std::string formText(const Form& form, char separator)
{
    std::string text;
    for (const Field& field : form)
        text += (text.empty() ? "" : std::string(1, separator)) + field.name;
    return text;
}

std::vector<double> parseForm(const std::string& text, const std::string& what, const Form& form,
                              char separator)
{
    const std::vector<std::string> parts = split(text, separator);
    if (parts.size() != form.size())
        refuse(text, what, formText(form, separator));
    std::vector<double> values;
    values.reserve(form.size());
    for (std::size_t i = 0; i < form.size(); ++i)
        values.push_back(parseField(parts[i], form.size() == 1 ? what : what + " " + form[i].name, form[i]));
    return values;
}

double parseNumber(const std::string& text, const std::string& what, double low, double high)
{
    return parseField(text, what, {"NUMBER", Field::Kind::Number, low, high});
}

cv::Size parseSize(const std::string& text, const std::string& what)
{
    const Form form = {{"WIDTH", Field::Kind::Whole, 1, s32MaxSide},
                       {"HEIGHT", Field::Kind::Whole, 1, s32MaxSide}};
    const std::vector<double> sides = parseForm(text, what, form, 'x');
    return {static_cast<int>(sides[0]), static_cast<int>(sides[1])};
}

std::string numberText(double value)
{
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string numberText(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

std::string sizeText(cv::Size size)
{
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

} // namespace velmo::camera

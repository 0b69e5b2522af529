#include "camera/settings/Parse.h"

#include "core/Exception.h"
#include "core/memory/MemoryAcsii.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
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

/// A limit as people read it.
std::string limitText(double number)
{
    std::ostringstream text;
    text << std::setprecision(10) << number;
    return text.str();
}

std::string kindText(Field::Kind kind)
{
    return kind == Field::Kind::Whole        ? "a whole number"
           : kind == Field::Kind::Percentile ? "a percentile like p1,"
           : kind == Field::Kind::Value      ? "a number or a count like 7000n"
                                             : "a number";
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

/// The number that a text stands for; not a number if it stands for none.
double numberIn(const std::string& text, Field::Kind kind)
{
    std::int64_t whole = 0;
    double number = std::nan("");
    if (kind == Field::Kind::Whole)
        return MemoryAcsii::parse(text, whole) ? static_cast<double>(whole) : number;
    const bool percentile = kind == Field::Kind::Percentile;
    const bool count = kind == Field::Kind::Value && !text.empty() && text.back() == 'n';
    if (!percentile || text.substr(0, 1) == "p")
        MemoryAcsii::parse(text.substr(percentile ? 1 : 0, text.size() - (count ? 1 : 0)), number);
    return number;
}

double parseField(const std::string& text, const std::string& what, const Field& field)
{
    if (field.kind == Field::Kind::Colour)
        return parseHexadecimal(text, what);
    const double value = numberIn(text, field.kind);
    if (field.kind == Field::Kind::Value) { // which there are depends on the recording
        if (!std::isfinite(value))
            refuse(text, what, kindText(field.kind));
        return value;
    }
    // Compared so that a NaN is refused too.
    if (!(value >= field.low && value <= field.high))
        refuse(text, what,
               kindText(field.kind) + " from " + limitText(field.low) + " to " + limitText(field.high));
    return value;
}

void checkOrder(double before, double value, const std::string& text, const std::string& what,
                const Field& field)
{
    if (field.order == Field::Order::Above && value <= before)
        VELMO_THROW(what + ": in '" + text + "' " + limitText(value) + " is not above " + limitText(before));
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

std::string limitsText(const Field& field)
{
    return field.kind == Field::Kind::Colour || field.kind == Field::Kind::Value
               ? ""
               : std::string(field.name) + " " + limitText(field.low) + " to " + limitText(field.high);
}

bool hasForm(const std::string& text, const Form& form, char separator)
{
    return split(text, separator).size() == form.size();
}

std::vector<double> parseForm(const std::string& text, const std::string& what, const Form& form,
                              char separator)
{
    const std::vector<std::string> parts = split(text, separator);
    if (parts.size() != form.size())
        refuse(text, what, formText(form, separator));
    std::vector<double> values;
    values.reserve(form.size());
    for (std::size_t i = 0; i < form.size(); ++i) {
        const std::string name = form.size() == 1 ? what : what + " " + form[i].name;
        values.push_back(parseField(parts[i], name, form[i]));
        if (i > 0)
            checkOrder(values[i - 1], values[i], text, name, form[i]);
    }
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

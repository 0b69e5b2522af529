#pragma once

#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::camera {

// Reads values that people type. Nothing but a whole, complete number is a number; whatever is refused is an
// Exception that begins with `what`, names the text and says what would be right.

/// The parts of a text between the separators; one more than there are separators, parts may be empty.
VELMO_API std::vector<std::string> split(const std::string& text, char separator);

/// One part of a form such as GAIN:FACTOR.
struct Field
{
    enum class Kind
    {
        Whole,      ///< a whole number
        Number,     ///< fractions allowed
        Percentile, ///< a number behind a "p"
        Value,      ///< a number as the thermometer reads values, or a count: one with an "n" behind it
        Colour      ///< RRGGBB in hexadecimal digits
    };
    enum class Order
    {
        Any,
        Above ///< above the field before
    };

    const char* name;
    Kind kind = Kind::Whole;
    double low = 0; ///< limits of a number
    double high = 0;
    Order order = Order::Any;
};

/// The fields of a value, separated by one sign: "16:1843" for GAIN:FACTOR.
using Form = std::vector<Field>;

/// "GAIN:FACTOR".
VELMO_API std::string formText(const Form& form, char separator = ':');

/// "GAIN 0 to 16"; empty for a colour.
VELMO_API std::string limitsText(const Field& field);

/// Whether the text has as many parts as the form.
VELMO_API bool hasForm(const std::string& text, const Form& form, char separator = ':');

/// As many numbers as the form has fields.
VELMO_API std::vector<double> parseForm(const std::string& text, const std::string& what, const Form& form,
                                        char separator = ':');

/// A number from `low` to `high`, fractions allowed.
VELMO_API double parseNumber(const std::string& text, const std::string& what, double low, double high);

/// `WIDTHxHEIGHT`, both from 1 to 16384.
VELMO_API cv::Size parseSize(const std::string& text, const std::string& what);

/// The shortest text that is read back as the same number.
VELMO_API std::string numberText(double value);

/// With so many digits after the point.
VELMO_API std::string numberText(double value, int decimals);

/// "160x120".
VELMO_API std::string sizeText(cv::Size size);

} // namespace velmo::camera

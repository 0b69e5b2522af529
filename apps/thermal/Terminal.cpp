#include "apps/thermal/Terminal.h"

#include <algorithm>
#include <cstdio>

namespace thermal {
namespace {

constexpr std::size_t nLongest = 1000; ///< bytes; two file names fit

/// Bytes that no terminal takes for a letter: control characters, and what is not UTF-8.
std::string escaped(unsigned char byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02x", byte);
    return text;
}

/// How many bytes a UTF-8 letter has that begins there; 0 if none does, or a control character.
std::size_t letterAt(const std::string& text, std::size_t place)
{
    const auto byte = [&](std::size_t n) {
        return place + n < text.size() ? static_cast<unsigned char>(text[place + n]) : 0U;
    };
    const unsigned first = byte(0);
    if (first >= 0x20 && first < 0x7F)
        return 1;
    const std::size_t length = first >= 0xF0 && first < 0xF5 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    for (std::size_t n = 1; n < length; ++n)
        if ((byte(n) & 0xC0U) != 0x80)
            return 0;
    const bool control = first == 0xC2 && byte(1) < 0xA0;
    return control || first >= 0xF5 ? 0 : length;
}

std::string shortened(const std::string& text)
{
    if (text.size() <= nLongest)
        return text;
    return text.substr(0, nLongest / 2) + " ... " + text.substr(text.size() - nLongest / 2);
}

} // namespace

std::string forTerminal(const std::string& text)
{
    const std::string whole = shortened(text);
    std::string shown;
    for (std::size_t place = 0; place < whole.size();) {
        const std::size_t length = letterAt(whole, place);
        shown += length > 0 ? whole.substr(place, length) : escaped(static_cast<unsigned char>(whole[place]));
        place += length > 0 ? length : 1;
    }
    return shown;
}

std::string complaint(const std::string& message)
{
    std::string line = message;
    std::replace(line.begin(), line.end(), '\n', ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    return "thermal: " + forTerminal(line) + "\n";
}

} // namespace thermal

#pragma once

#include "core/Export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmo::exp {

/// Values to ASCII text and back, the same in every locale.
class VELMO_API MemoryAcsii
{
public:
    /// Reads a value from a text.
    /// @return false, with `value` as it was, unless the whole text is one value in the range of its
    ///         type: no blanks around it, no plus sign, no other characters after it. Flags are "true"
    ///         and "false". Floating-point numbers are decimal, also "inf" and "nan".
    static bool parse(std::string_view text, bool& value);
    static bool parse(std::string_view text, std::int8_t& value);
    static bool parse(std::string_view text, std::uint8_t& value);
    static bool parse(std::string_view text, std::int16_t& value);
    static bool parse(std::string_view text, std::uint16_t& value);
    static bool parse(std::string_view text, std::int32_t& value);
    static bool parse(std::string_view text, std::uint32_t& value);
    static bool parse(std::string_view text, std::int64_t& value);
    static bool parse(std::string_view text, std::uint64_t& value);
    static bool parse(std::string_view text, float& value);
    static bool parse(std::string_view text, double& value);
    /// Any text is a string.
    static bool parse(std::string_view text, std::string& value);
    /// Bytes: tokens with white space or one comma between; each a decimal number 0 to 255, a
    /// hexadecimal one (0x00 to 0xFF) or a colour \#RRGGBB that stands for three bytes. White space
    /// around is allowed here; an empty text has no bytes.
    static bool parse(std::string_view text, std::vector<unsigned char>& value);

    /// The text that `parse` turns into the same value: the shortest there is for numbers, decimal
    /// numbers with blanks between for bytes.
    static std::string format(bool value);
    static std::string format(std::int8_t value);
    static std::string format(std::uint8_t value);
    static std::string format(std::int16_t value);
    static std::string format(std::uint16_t value);
    static std::string format(std::int32_t value);
    static std::string format(std::uint32_t value);
    static std::string format(std::int64_t value);
    static std::string format(std::uint64_t value);
    static std::string format(float value);
    static std::string format(double value);
    static std::string format(const std::string& value);
    static std::string format(const std::vector<unsigned char>& value);

    /// White space as ASCII has it: blank, tab, line ends, form feed.
    static bool isBlank(char character)
    {
        return character == ' ' || (character >= '\t' && character <= '\r');
    }
    /// The text without white space at its ends.
    static std::string_view trim(std::string_view text);
};

} // namespace velmo::exp

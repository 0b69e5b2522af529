#include "core/memory/MemoryAcsii.h"

#include <charconv>
#include <system_error>

namespace velmo::exp {

namespace {

template <class T>
bool parseNumber(std::string_view text, T& value)
{
    const char* const end = text.data() + text.size();
    T parsed{};
    const auto [next, error] = std::from_chars(text.data(), end, parsed);
    if (error != std::errc() || next != end || text.empty())
        return false;
    value = parsed;
    return true;
}

template <class T>
std::string formatNumber(T value)
{
    char text[64]; // the longest double has 24 characters
    return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

int hexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Two digits at `text` as a byte, -1 if they are none.
int hexByte(const char* text)
{
    const int high = hexDigit(text[0]), low = hexDigit(text[1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// Reads the tokens of a byte list one after the other; every call leaves the reader behind its token.
class ByteList
{
public:
    explicit ByteList(std::string_view text) : m_pNext(text.data()), m_pEnd(m_pNext + text.size()) {}

    bool parse(std::vector<unsigned char>& bytes)
    {
        skipBlanks();
        while (m_pNext != m_pEnd) {
            if (!token(bytes) || !separator())
                return false;
        }
        return true;
    }

private:
    void skipBlanks()
    {
        while (m_pNext != m_pEnd && MemoryAcsii::isBlank(*m_pNext))
            ++m_pNext;
    }

    bool token(std::vector<unsigned char>& bytes)
    {
        if (*m_pNext == '#')
            return colour(bytes);
        const bool hexadecimal = m_pEnd - m_pNext > 2 && m_pNext[0] == '0' && m_pNext[1] == 'x';
        const char* const digits = hexadecimal ? m_pNext + 2 : m_pNext;
        unsigned char byte = 0;
        const auto [next, error] = std::from_chars(digits, m_pEnd, byte, hexadecimal ? 16 : 10);
        if (error != std::errc())
            return false;
        m_pNext = next;
        bytes.push_back(byte);
        return true;
    }

    bool colour(std::vector<unsigned char>& bytes)
    {
        if (m_pEnd - m_pNext < 7)
            return false;
        unsigned char parts[3];
        for (int i = 0; i < 3; ++i) {
            const int byte = hexByte(m_pNext + 1 + 2 * i);
            if (byte < 0)
                return false;
            parts[i] = static_cast<unsigned char>(byte);
        }
        m_pNext += 7;
        bytes.insert(bytes.end(), parts, parts + 3);
        return true;
    }

    /// Between two tokens stands white space, a comma or both; after a comma there is a token.
    bool separator()
    {
        const char* const start = m_pNext;
        skipBlanks();
        if (m_pNext == m_pEnd)
            return true;
        if (*m_pNext != ',')
            return m_pNext != start;
        ++m_pNext;
        skipBlanks();
        return m_pNext != m_pEnd;
    }

    const char* m_pNext;
    const char* m_pEnd;
};

} // namespace

bool MemoryAcsii::parse(std::string_view text, bool& value)
{
    if (text != "true" && text != "false")
        return false;
    value = text == "true";
    return true;
}

// clang-format off
bool MemoryAcsii::parse(std::string_view text, std::int8_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::uint8_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::int16_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::uint16_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::int32_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::uint32_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::int64_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, std::uint64_t& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, float& value) { return parseNumber(text, value); }
bool MemoryAcsii::parse(std::string_view text, double& value) { return parseNumber(text, value); }

std::string MemoryAcsii::format(bool value) { return value ? "true" : "false"; }
std::string MemoryAcsii::format(std::int8_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::uint8_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::int16_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::uint16_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::int32_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::uint32_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::int64_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(std::uint64_t value) { return formatNumber(value); }
std::string MemoryAcsii::format(float value) { return formatNumber(value); }
std::string MemoryAcsii::format(double value) { return formatNumber(value); }
std::string MemoryAcsii::format(const std::string& value) { return value; }
// clang-format on

bool MemoryAcsii::parse(std::string_view text, std::string& value)
{
    value = text;
    return true;
}

bool MemoryAcsii::parse(std::string_view text, std::vector<unsigned char>& value)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(text.size() * 3 / 8 + 1); // three bytes from "#RRGGBB "
    if (!ByteList(text).parse(bytes))
        return false;
    value = std::move(bytes);
    return true;
}

std::string MemoryAcsii::format(const std::vector<unsigned char>& value)
{
    std::string text;
    for (const unsigned char byte : value) {
        if (!text.empty())
            text += ' ';
        text += formatNumber(byte);
    }
    return text;
}

std::string_view MemoryAcsii::trim(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace velmo::exp

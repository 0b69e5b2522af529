#include "core/codecs/XmlCheck.h"

#include "core/Exception.h"
#include "core/codecs/StorageText.h"
#include "core/memory/MemoryAcsii.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmo::exp {

namespace {

/// What ends a run of plain text: markup, references, the end or a NUL, and bytes beyond ASCII.
std::array<bool, 256> makePlain()
{
    std::array<bool, 256> plain{};
    std::fill(plain.begin() + 1, plain.begin() + 0x80, true);
    for (const unsigned char special : {'<', '>', '&', '"', '\''})
        plain[special] = false;
    return plain;
}

bool isLetter(char character)
{
    const char lower = static_cast<char>(character | 0x20);
    return (lower >= 'a' && lower <= 'z') || static_cast<unsigned char>(character) >= 0x80;
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isNameStart(char character)
{
    return isLetter(character) || character == '_';
}

bool isNamePart(char character)
{
    return isNameStart(character) || isDigit(character) || character == '-' || character == '.' ||
           character == ':';
}

bool isContinuation(char character)
{
    return (static_cast<unsigned char>(character) & 0xC0) == 0x80;
}

/// How many bytes a UTF-8 character has that begins with `lead`; 0 if none does.
int utf8LengthAfter(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The length of the UTF-8 character at `text`, 0 if there is none; the zero after a string's end is
/// no continuation, so nothing beyond it is read.
int utf8Length(const char* text)
{
    const int length = utf8LengthAfter(static_cast<unsigned char>(*text));
    for (int i = 1; i < length; ++i)
        if (!isContinuation(text[i]))
            return 0;
    return length;
}

/// Walks over a text that ends in a zero, as strings do. Each step returns false, wherever it then
/// stands, if the markup is not in order.
class XmlCheck
{
public:
    explicit XmlCheck(std::string& text)
        : m_pNext(text.data()), m_pEnd(m_pNext + text.size()),
          m_u64Parts(StorageLimits::s32FreeParts + text.size() / StorageLimits::s32BytesPerPart)
    {}

    XmlForm run()
    {
        if (startsWith("\xEF\xBB\xBF")) // some editors put a byte-order mark in front
            m_pNext += 3;
        while (!atEnd())
            if (!(*m_pNext == '<' ? markup() : text()))
                return broken();
        return m_s32Depth > 0 ? XmlForm::Broken : m_bUtf8 ? XmlForm::Utf8 : XmlForm::Bytes;
    }

private:
    /// A zero is the end, or else a byte that has no place in a text.
    bool atEnd() const
    {
        if (*m_pNext != '\0')
            return false;
        if (m_pNext != m_pEnd)
            VELMO_THROW("XML text holds a NUL byte; the limit is 0");
        return true;
    }

    /// A NUL byte is named even if markup out of order comes first.
    XmlForm broken()
    {
        m_pNext += std::strlen(m_pNext);
        atEnd();
        return XmlForm::Broken;
    }

    bool startsWith(std::string_view token) const
    {
        return std::string_view(m_pNext, static_cast<std::size_t>(m_pEnd - m_pNext))
                   .substr(0, token.size()) == token;
    }

    /// As startsWith; upper case in the text counts as lower case.
    bool startsWithAnyCase(std::string_view token) const
    {
        return static_cast<std::size_t>(m_pEnd - m_pNext) >= token.size() &&
               std::equal(token.begin(), token.end(), m_pNext, [](char wanted, char found) {
                   return wanted == (found >= 'A' && found <= 'Z' ? static_cast<char>(found | 0x20) : found);
               });
    }

    bool take(char wanted)
    {
        if (*m_pNext != wanted)
            return false;
        ++m_pNext;
        return true;
    }

    void skipBlanks()
    {
        while (MemoryAcsii::isBlank(*m_pNext))
            ++m_pNext;
    }

    /// Steps over any one character.
    void character()
    {
        const int length = utf8Length(m_pNext);
        m_bUtf8 = m_bUtf8 && length > 0;
        m_pNext += std::max(length, 1);
    }

    /// What the parser makes of very little text takes many times its size in memory.
    void countPart()
    {
        if (m_u64Parts-- == 0)
            VELMO_THROW("XML text exceeds the limit of " + std::to_string(StorageLimits::s32FreeParts) +
                        " nodes and attributes and one for every " +
                        std::to_string(StorageLimits::s32BytesPerPart) + " bytes");
    }

    void countNode()
    {
        countPart();
        if (++m_s32Nodes > StorageLimits::s32Nodes)
            VELMO_THROW("XML text exceeds the limit of " + std::to_string(StorageLimits::s32Nodes) +
                        " elements, texts, comments and instructions");
    }

    /// Steps up to the next markup. Of blanks alone the parser makes no node; outside the root there is
    /// nothing else.
    bool text()
    {
        skipBlanks();
        if (*m_pNext != '<' && !atEnd()) {
            if (m_s32Depth == 0)
                return false;
            countNode();
        }
        while (*m_pNext != '<' && !atEnd())
            if (!(*m_pNext == '&' ? reference() : plainText()))
                return false;
        return true;
    }

    /// Steps over what is neither markup nor a reference, at least one character.
    bool plainText()
    {
        static const std::array<bool, 256> plain = makePlain();
        do {
            character();
            while (plain[static_cast<unsigned char>(*m_pNext)])
                ++m_pNext;
        } while (static_cast<unsigned char>(*m_pNext) >= 0x80);
        return true;
    }

    bool markup()
    {
        switch (m_pNext[1]) {
        case '!':
            return comment();
        case '?':
            return instruction();
        case '/':
            return endTag();
        default:
            return startTag();
        }
    }

    /// Steps behind the first `token` from here on.
    bool skipPast(std::string_view token)
    {
        while (!atEnd()) {
            if (startsWith(token)) {
                m_pNext += token.size();
                return true;
            }
            character();
        }
        return false;
    }

    bool comment()
    {
        countNode();
        if (startsWith("<!--")) {
            m_pNext += 4;
            return skipPast("-->");
        }
        if (startsWith("<![CDATA["))
            return m_s32Depth > 0 && skipPast("]]>");
        if (startsWithAnyCase("<!doctype"))
            VELMO_THROW("XML text holds a document type declaration; the limit is 0");
        return false;
    }

    /// To the parser, an instruction ends with the first ">", and one that begins with "xml" may hide markup
    /// in its quotes. Nobody asks what it says: it becomes one that reads the same everywhere.
    bool instruction()
    {
        countNode();
        m_pNext += 2;
        char* const begin = m_pNext;
        if (!isNameStart(*m_pNext) || !skipPast("?>"))
            return false;
        std::fill(begin, m_pNext - 2, '-');
        return true;
    }

    /// The byte-order mark and two that are no characters: to the parser blanks, also around a name.
    bool standsAtHiddenBlank() const
    {
        return startsWith("\xEF\xBB\xBF") || startsWith("\xEF\xBF\xBE") || startsWith("\xEF\xBF\xBF");
    }

    bool name()
    {
        if (!isNameStart(*m_pNext))
            return false;
        for (; isNamePart(*m_pNext); character())
            if (static_cast<unsigned char>(*m_pNext) == 0xEF && standsAtHiddenBlank())
                return false;
        return true;
    }

    bool sign(char wanted)
    {
        skipBlanks();
        const bool found = take(wanted);
        skipBlanks();
        return found;
    }

    bool endTag()
    {
        m_pNext += 2;
        return --m_s32Depth >= 0 && name() && sign('>');
    }

    bool startTag()
    {
        ++m_pNext;
        countNode();
        if (!name())
            return false;
        if (m_s32Depth == 0 && m_bRoot)
            VELMO_THROW("XML text holds more than one root element; the limit is 1");
        m_bRoot = true;
        if (m_s32Depth >= StorageLimits::s32Depth)
            VELMO_THROW("XML text exceeds the limit of " + std::to_string(StorageLimits::s32Depth) +
                        " nested elements");
        if (!attributes())
            return false;
        if (take('/'))
            return take('>');
        ++m_s32Depth;
        return take('>');
    }

    bool attributes()
    {
        int count = 0;
        for (skipBlanks(); isNameStart(*m_pNext); skipBlanks()) {
            if (++count > StorageLimits::s32Attributes)
                VELMO_THROW("XML text exceeds the limit of " + std::to_string(StorageLimits::s32Attributes) +
                            " attributes of one element");
            countPart();
            if (!name() || !sign('=') || !attributeValue())
                return false;
        }
        return true;
    }

    bool attributeValue()
    {
        const char quote = *m_pNext;
        if (!take('"') && !take('\''))
            return false;
        while (!atEnd()) {
            if (take(quote))
                return true;
            if (!(*m_pNext == '&' ? reference() : plainText()))
                return false;
        }
        return false;
    }

    /// A numeric reference has to be whole: the parser looks for its ";" beyond quotes and tags. An
    /// "&" before anything else stands for itself there.
    bool reference()
    {
        ++m_pNext;
        if (!take('#'))
            return true;
        const bool hexadecimal = take('x');
        std::uint32_t code = 0;
        int digits = 0;
        for (int digit; (digit = digitAt(*m_pNext, hexadecimal)) >= 0 && digits < 8; ++m_pNext, ++digits)
            code = code * (hexadecimal ? 16 : 10) + static_cast<std::uint32_t>(digit);
        if (digits == 0 || digits > 7 || !take(';') || code > 0x10FFFF)
            return false;
        if (code == 0)
            VELMO_THROW("XML text holds a reference to a NUL byte; the limit is 0");
        return true;
    }

    static int digitAt(char character, bool hexadecimal)
    {
        if (isDigit(character))
            return character - '0';
        const char lower = static_cast<char>(character | 0x20);
        return hexadecimal && lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    }

    char* m_pNext;
    const char* m_pEnd;
    int m_s32Depth = 0;
    int m_s32Nodes = 0;
    std::size_t m_u64Parts; ///< nodes and attributes that there may still be
    bool m_bRoot = false;   ///< there was one
    bool m_bUtf8 = true;
};

} // namespace

XmlForm checkXml(std::string& text)
{
    return XmlCheck(text).run();
}

} // namespace velmo::exp

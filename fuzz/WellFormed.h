#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <vector>

/// Whether an XML text is well-formed, read strictly and simply: what a storage file has to be that the
/// decoder accepts. Written apart from the decoder's own check, to be compared with it. Where the dialect is
/// wider than XML: "&" may stand for itself, and attributes need no white space between them.
class WellFormed
{
public:
    static bool check(std::string_view text)
    {
        if (text.substr(0, 3) == "\xEF\xBB\xBF")
            text.remove_prefix(3);
        return WellFormed(text).document();
    }

private:
    explicit WellFormed(std::string_view text) : m_strRest(text) {}

    bool document()
    {
        int roots = 0;
        while (!m_strRest.empty()) {
            const bool outside = m_aOpen.empty();
            if (m_strRest[0] != '<') {
                const std::string_view text = upTo("<");
                if (outside ? text.find_first_not_of(" \t\r\n\v\f") != text.npos : !references(text))
                    return false;
            } else if (skip("<!--")) {
                if (!skipPast("-->"))
                    return false;
            } else if (skip("<![CDATA[")) {
                if (outside || !skipPast("]]>"))
                    return false;
            } else if (skip("<?")) {
                if (name().empty() || !skipPast("?>"))
                    return false;
            } else if (skip("</")) {
                if (outside || name() != m_aOpen.back() || (blanks(), !skip(">")))
                    return false;
                m_aOpen.pop_back();
            } else {
                skip("<");
                roots += outside ? 1 : 0;
                if (roots > 1 || !element())
                    return false;
            }
        }
        return roots == 1 && m_aOpen.empty();
    }

    bool element()
    {
        const std::string_view tag = name();
        std::vector<std::string_view> seen;
        for (blanks(); !tag.empty() && !m_strRest.empty(); blanks()) {
            if (skip("/>"))
                return true;
            if (skip(">")) {
                m_aOpen.push_back(tag);
                return true;
            }
            const std::string_view attribute = name();
            if (attribute.empty() || std::find(seen.begin(), seen.end(), attribute) != seen.end())
                return false;
            seen.push_back(attribute);
            if (blanks(), !skip("="))
                return false;
            blanks();
            const std::string_view quote = m_strRest.substr(0, 1);
            if ((quote != "\"" && quote != "'") || !skip(quote))
                return false;
            if (!references(upTo(quote)) || !skip(quote))
                return false;
        }
        return false;
    }

    /// Numeric ones name a character other than 0.
    static bool references(std::string_view text)
    {
        for (std::size_t at = text.find("&#"); at != text.npos; at = text.find("&#", at + 1)) {
            const bool hexadecimal = text.substr(at + 2, 1) == "x";
            const std::size_t begin = at + (hexadecimal ? 3 : 2);
            const std::size_t end =
                text.find_first_not_of(hexadecimal ? "0123456789abcdefABCDEF" : "0123456789", begin);
            if (end == text.npos || end == begin || end - begin > 7 || text[end] != ';')
                return false;
            const unsigned long code =
                std::stoul(std::string(text.substr(begin, end - begin)), nullptr, hexadecimal ? 16 : 10);
            if (code == 0 || code > 0x10FFFF)
                return false;
        }
        return true;
    }

    std::string_view name()
    {
        const auto isFirst = [](unsigned char c) { return std::isalpha(c) != 0 || c == '_' || c >= 128; };
        const auto ends = [&](unsigned char c) {
            return !isFirst(c) &&
                   std::string_view("0123456789-.:").find(static_cast<char>(c)) == m_strRest.npos;
        };
        if (m_strRest.empty() || !isFirst(static_cast<unsigned char>(m_strRest[0])))
            return {};
        const auto end = std::find_if(m_strRest.begin(), m_strRest.end(), ends);
        return taken(static_cast<std::size_t>(end - m_strRest.begin()));
    }

    std::string_view taken(std::size_t length)
    {
        const std::string_view part = m_strRest.substr(0, length);
        m_strRest.remove_prefix(part.size());
        return part;
    }
    std::string_view upTo(std::string_view token)
    {
        return taken(std::min(m_strRest.find(token), m_strRest.size()));
    }
    bool skip(std::string_view token)
    {
        if (m_strRest.substr(0, token.size()) != token)
            return false;
        m_strRest.remove_prefix(token.size());
        return true;
    }
    bool skipPast(std::string_view token)
    {
        upTo(token);
        return skip(token);
    }
    void blanks() { taken(std::min(m_strRest.find_first_not_of(" \t\r\n\v\f"), m_strRest.size())); }

    std::string_view m_strRest;
    std::vector<std::string_view> m_aOpen; ///< names of elements that are open
};

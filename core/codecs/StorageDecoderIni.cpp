#include "core/codecs/StorageDecoderIni.h"

#include "core/Exception.h"
#include "core/codecs/StorageText.h"
#include "core/memory/MemoryAcsii.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velmo::exp {

namespace {

using Storage = DataStorage<std::string>;

/// Takes a part off the front of a text, together with the separator after it.
std::string_view takePart(std::string_view& text, char separator)
{
    const std::size_t length = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return part;
}

bool parseBytes(std::string_view text, std::vector<unsigned char>& bytes)
{
    if (text.find(',') == text.npos || text.back() == ',')
        return false;
    while (!text.empty()) {
        std::uint8_t byte = 0;
        if (!MemoryAcsii::parse(MemoryAcsii::trim(takePart(text, ',')), byte))
            return false;
        bytes.push_back(byte);
    }
    return true;
}

std::shared_ptr<Variant> parseValue(std::string_view text)
{
    bool flag = false;
    if (MemoryAcsii::parse(text, flag))
        return Variant::create(flag);
    std::int64_t integer = 0;
    if (MemoryAcsii::parse(text, integer))
        return Variant::create(integer);
    double real = 0;
    // Without a digit it is a word: "nan" and "inf" are names as well as any.
    if (text.find_first_of("0123456789") != text.npos && MemoryAcsii::parse(text, real))
        return Variant::create(real);
    std::vector<unsigned char> bytes;
    if (parseBytes(text, bytes))
        return Variant::create(std::move(bytes));
    return Variant::create(std::string(text));
}

/// The tree as far as it is read, and the group that lines go into.
class IniReader
{
public:
    void line(std::string_view text)
    {
        ++m_s32Line;
        text = MemoryAcsii::trim(text);
        if (text.empty() || text.front() == ';' || text.front() == '#')
            return;
        if (++m_s32Keys > StorageLimits::s32Keys)
            VELMO_THROW("INI text exceeds the limit of " + std::to_string(StorageLimits::s32Keys) +
                        " keys and sections");
        if (text.front() == '[' && text.back() == ']')
            openSection(MemoryAcsii::trim(text.substr(1, text.size() - 2)));
        else if (text.front() != '[' && text.find('=') != text.npos)
            store(text);
        else
            VELMO_THROW("INI line " + std::to_string(m_s32Line) + " is neither a section nor key = value");
    }

    Storage take() { return std::move(m_stoResult); }

private:
    void openSection(std::string_view name)
    {
        m_strSection = name;
        m_oIds.add(m_strSection);
        if (!m_stoResult.get(m_strSection))
            m_stoResult.set(m_strSection, Variant::create(Storage()));
        m_strSection += '/';
        m_u64Depth = static_cast<std::size_t>(std::count(m_strSection.begin(), m_strSection.end(), '/'));
    }

    void store(std::string_view text)
    {
        const std::string_view key = MemoryAcsii::trim(takePart(text, '='));
        m_oIds.add(key, m_u64Depth);
        m_stoResult.set(m_strSection + std::string(key), parseValue(MemoryAcsii::trim(text)));
    }

    Storage m_stoResult;
    std::string m_strSection;   ///< with a "/" behind it, unless it is the top
    std::size_t m_u64Depth = 0; ///< of that group
    IdCheck m_oIds;
    int m_s32Line = 0;
    int m_s32Keys = 0; ///< and sections
};

} // namespace

std::pair<Storage, std::string> StorageDecoderIni::decode(std::istream& in)
{
    if (in.fail())
        VELMO_THROW("Inputstream not readable!");
    std::string text;
    readText(in, StorageLimits::u64Ini, text);
    std::string_view rest = text;
    if (rest.substr(0, 3) == "\xEF\xBB\xBF") // some editors put a byte-order mark in front
        rest.remove_prefix(3);
    IniReader reader;
    while (!rest.empty())
        reader.line(takePart(rest, '\n'));
    return {reader.take(), ""};
}

} // namespace velmo::exp

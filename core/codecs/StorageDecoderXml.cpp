#include "core/codecs/StorageDecoderXml.h"

#include "core/Exception.h"
#include "core/codecs/StorageText.h"
#include "core/codecs/XmlCheck.h"
#include "core/memory/ByteCursor.h"
#include "core/memory/MemoryAcsii.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <tinyxml.h>

namespace velmo::exp {

namespace {

using Storage = DataStorage<std::string>;

/// What stands in front of the XML text.
struct Package
{
    bool bTextValues = true;
    bool bBigEndian = false;
    std::string text;
};

constexpr std::string_view packageStart = "<?storage";

/// The rest of the first line of a stream; a line of no reasonable length is cut off.
std::string readLine(std::istream& in)
{
    constexpr std::size_t limit = 1024;
    const QuietStream quiet(in);
    std::string line;
    for (int next;
         line.size() < limit && (next = in.get()) != std::istream::traits_type::eof() && next != '\n';)
        line += static_cast<char>(next);
    return line;
}

/// Takes `name="value"` and the blanks before it off the front of a line.
std::optional<std::pair<std::string, std::string>> takeAttribute(std::string_view& line)
{
    const std::string_view text = MemoryAcsii::trim(line);
    const std::size_t equals = text.find("=\"");
    const std::size_t quote = equals == text.npos ? text.npos : text.find('"', equals + 2);
    if (text.size() == line.size() || quote == text.npos)
        return std::nullopt;
    line = text.substr(quote + 1);
    return std::pair(std::string(text.substr(0, equals)),
                     std::string(text.substr(equals + 2, quote - equals - 2)));
}

/// The attributes of a package instruction, given what follows its first word; none if it is not in order.
std::map<std::string, std::string> packageAttributes(std::string_view line)
{
    std::map<std::string, std::string> attributes;
    line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    if (line.size() < 2 || line.substr(line.size() - 2) != "?>")
        return {};
    line.remove_suffix(2);
    while (!MemoryAcsii::trim(line).empty()) {
        const auto attribute = takeAttribute(line);
        if (!attribute || !attributes.insert(*attribute).second)
            return {};
    }
    return attributes;
}

/// Finds out which of two words an attribute is.
bool choose(const std::map<std::string, std::string>& attributes, const std::string& name, const char* first,
            const char* second)
{
    const auto found = attributes.find(name);
    if (found == attributes.end() || (found->second != first && found->second != second))
        VELMO_THROW("Package instruction needs " + name + "=\"" + first + "\" or \"" + second + "\"");
    return found->second == first;
}

Package readPackage(std::istream& in, const std::string& line)
{
    auto attributes = packageAttributes(line);
    attributes.emplace("endian", "little");
    if (attributes["version"] != "1")
        VELMO_THROW("Package instruction of a storage file is not in order, or its version is not 1");
    Package package;
    package.bTextValues = choose(attributes, "values", "text", "binary");
    package.bBigEndian = choose(attributes, "endian", "big", "little");

    std::uint64_t size = 0;
    if (!MemoryAcsii::parse(attributes["size"], size) || attributes.size() != 4)
        VELMO_THROW(
            "Package instruction needs a size in bytes, and nothing but version, values, endian and size");
    if (size > StorageLimits::u64Xml)
        VELMO_THROW("XML text of " + std::to_string(size) + " bytes exceeds the limit of " +
                    std::to_string(StorageLimits::u64Xml) + " bytes");
    if (const std::uint64_t read = readUpTo(in, size, package.text); read < size)
        VELMO_THROW("XML text of " + std::to_string(size) + " bytes announced, " + std::to_string(read) +
                    " bytes left");
    return package;
}

/// Whether the stream begins with a package instruction shows after a few bytes, which a stream may
/// not be able to give back.
Package readStream(std::istream& in)
{
    Package package;
    std::string& start = package.text;
    readUpTo(in, packageStart.size() + 1, start);
    if (start.size() > packageStart.size() && start.compare(0, packageStart.size(), packageStart) == 0 &&
        MemoryAcsii::isBlank(start.back()) && start.back() != '\n') {
        return readPackage(in, start.back() + readLine(in));
    }
    readText(in, StorageLimits::u64Xml, start);
    return package;
}

/// What the check has left to the parser as an instruction is of no type that it knows.
bool isDecoration(const TiXmlNode& node)
{
    return node.ToUnknown() || node.ToComment();
}

/// @throws std::logic_error  if the element does not have the attribute
const char* required(const TiXmlElement& element, const char* attribute)
{
    const char* const value = element.Attribute(attribute);
    if (!value)
        throw std::logic_error("Element \"" + element.ValueStr() + "\" has no attribute \"" + attribute +
                               "\"");
    return value;
}

std::shared_ptr<Variant> textValue(const TiXmlElement& item)
{
    const std::string type = required(item, "type");
    const TiXmlNode* node = item.FirstChild();
    while (node && node->ToUnknown())
        node = node->NextSibling();
    const std::string text = node ? node->ValueStr() : std::string();
    // Whether the parser keeps the white space around a text is a switch of the whole process.
    return Variant::fromString(type, type == "string" ? text : std::string(MemoryAcsii::trim(text)));
}

/// @param left  how many bytes the values of the file may still have
std::string readBytes(std::istream& in, const TiXmlElement& item, std::uint64_t& left)
{
    const char* const text = item.Attribute("size");
    std::uint64_t size = 0;
    if (!text || !MemoryAcsii::parse(text, size))
        VELMO_THROW("Item without a valid size: " + std::string(text ? text : "none"));
    if (size > left)
        VELMO_THROW("Value of " + std::to_string(size) + " bytes exceeds the limit of " +
                    std::to_string(StorageLimits::u64Values) + " bytes of all values");
    left -= size;
    std::string bytes;
    if (const std::uint64_t read = readUpTo(in, size, bytes); read < size)
        VELMO_THROW("Value of " + std::to_string(size) + " bytes announced, " + std::to_string(read) +
                    " bytes left");
    return bytes;
}

/// Empty if the item's size is not that of its value.
std::shared_ptr<Variant> binaryValue(std::istream& in, const TiXmlElement& item, Endian endian,
                                     std::uint64_t& left)
{
    const std::string type = required(item, "type");
    const std::string bytes = readBytes(in, item, left);
    std::size_t consumed = 0;
    std::shared_ptr<Variant> value;
    try {
        value = Variant::deserialize(type, endian, bytes.data(), bytes.size(), consumed);
    } catch (const EndOfBytes&) {
        consumed = bytes.size() + 1; // or more
    }
    return consumed == bytes.size() ? value : nullptr;
}

} // namespace

std::pair<Storage, std::string> StorageDecoderXml::decode(std::istream& in)
{
    if (in.fail())
        VELMO_THROW("Inputstream not readable!");
    bool textValues = true, bigEndian = false;
    const std::shared_ptr<TiXmlDocument> document = getPackageInfo(in, textValues, bigEndian);
    if (!document)
        VELMO_THROW("Inputstream does not contain any XML.");
    TiXmlNode* root = document->FirstChild();
    while (root && isDecoration(*root))
        root = root->NextSibling();
    if (!root)
        VELMO_THROW("Root element not found!");
    const TiXmlElement* const group = root->ToElement();
    if (!group || group->ValueStr() != "group")
        VELMO_THROW("Root group element not found!");
    std::string name = required(*group, "name");
    const Endian endian = bigEndian == Endianness::isBigEndianSystem() ? Endian::Native : Endian::Swapped;
    return {decodeStorage(in, root, textValues, endian), std::move(name)};
}

Storage StorageDecoderXml::decodeStorage(std::istream& in, TiXmlNode* group, bool textValues, Endian endian)
{
    /// A group that is being filled, its key in the group around it, and the next of its nodes.
    struct Level
    {
        std::string key;
        Storage storage;
        TiXmlNode* next;
    };

    IdCheck ids;
    std::uint64_t left = StorageLimits::u64Values;
    std::vector<Level> levels;
    levels.push_back({"", Storage(), group ? group->FirstChild() : nullptr});
    for (;;) {
        Level& level = levels.back();
        if (!level.next) {
            Storage filled = std::move(level.storage);
            if (levels.size() == 1)
                return filled;
            const auto value = Variant::create(Storage());
            const std::string key = std::move(level.key);
            levels.pop_back();
            // Set while it is empty: there is nothing in it to look for a storage that would hold itself.
            levels.back().storage.set(key, value);
            value->value<Storage>() = std::move(filled);
            continue;
        }
        TiXmlElement* const element = level.next->ToElement();
        level.next = level.next->NextSibling();
        if (!element)
            continue;

        std::string key = required(*element, "name");
        ids.add(key);
        if (element->ValueStr() == "group") {
            levels.push_back({std::move(key), Storage(), element->FirstChild()});
        } else if (element->ValueStr() == "item") {
            const auto value = textValues ? textValue(*element) : binaryValue(in, *element, endian, left);
            if (!value)
                VELMO_THROW("Buffer size and type size does not match");
            level.storage.set(key, value);
        } else {
            VELMO_THROW("Unknown node type!");
        }
    }
}

std::shared_ptr<TiXmlDocument> StorageDecoderXml::getPackageInfo(std::istream& in, bool& textValues,
                                                                 bool& bigEndian)
{
    Package package = readStream(in);
    textValues = package.bTextValues;
    bigEndian = package.bBigEndian;
    const XmlForm form = checkXml(package.text);
    if (form == XmlForm::Broken)
        return nullptr;
    auto document = std::make_shared<TiXmlDocument>();
    document->SetTabSize(0); // no one asks for rows and columns
    // Stated, not left to the parser: multi-byte characters that it believes in must be whole.
    document->Parse(package.text.c_str(), nullptr,
                    form == XmlForm::Utf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY);
    return document->Error() ? nullptr : document;
}

} // namespace velmo::exp

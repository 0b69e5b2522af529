#include "core/codecs/StorageDecoderXml.h"

#include "core/Exception.h"
#include "core/codecs/StorageText.h"
#include "core/codecs/XmlCheck.h"
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
    if (size > StorageLimits::u64Text)
        VELMO_THROW("XML text of " + std::to_string(size) + " bytes exceeds the limit of " +
                    std::to_string(StorageLimits::u64Text) + " bytes");
    package.text = readUpTo(in, size);
    if (package.text.size() < size)
        VELMO_THROW("XML text of " + std::to_string(size) + " bytes announced, " +
                    std::to_string(package.text.size()) + " bytes left");
    return package;
}

/// Whether the stream begins with a package instruction shows after a few bytes, which a stream may
/// not be able to give back.
Package readStream(std::istream& in)
{
    std::string start = readUpTo(in, packageStart.size() + 1);
    if (start.size() > packageStart.size() && start.compare(0, packageStart.size(), packageStart) == 0 &&
        MemoryAcsii::isBlank(start.back()) && start.back() != '\n') {
        return readPackage(in, start.back() + readLine(in));
    }
    Package package;
    package.text = std::move(start);
    package.text += readText(in);
    return package;
}

bool isDecoration(const TiXmlNode& node)
{
    return node.ToDeclaration() || node.ToComment();
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
    const TiXmlNode* const text = item.FirstChild();
    return Variant::fromString(required(item, "type"), text ? text->ValueStr() : std::string());
}

std::vector<unsigned char> readBytes(std::istream& in, const TiXmlElement& item)
{
    const char* const text = item.Attribute("size");
    std::uint64_t size = 0;
    if (!text || !MemoryAcsii::parse(text, size))
        VELMO_THROW("Item without a valid size: " + std::string(text ? text : "none"));
    const std::string bytes = readUpTo(in, size);
    if (bytes.size() < size)
        VELMO_THROW("Value of " + std::to_string(size) + " bytes announced, " + std::to_string(bytes.size()) +
                    " bytes left");
    return {bytes.begin(), bytes.end()};
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
    /// A group that is being filled, and the next of its nodes.
    struct Level
    {
        TiXmlNode* next;
        Storage* storage;
    };

    Storage result;
    std::vector<Level> levels{{group ? group->FirstChild() : nullptr, &result}};
    while (!levels.empty()) {
        auto& [next, storage] = levels.back();
        if (!next) {
            levels.pop_back();
            continue;
        }
        TiXmlElement* const element = next->ToElement();
        next = next->NextSibling();
        if (!element)
            continue;

        const bool isGroup = element->ValueStr() == "group";
        if (!isGroup && element->ValueStr() != "item")
            VELMO_THROW("Unknown node type!");
        const std::string key = required(*element, "name");
        checkDepthOf(key);
        if (isGroup) {
            const auto inner = Variant::create(Storage());
            storage->set(key, inner);
            levels.push_back({element->FirstChild(), &inner->value<Storage>()});
        } else if (textValues) {
            storage->set(key, textValue(*element));
        } else {
            const std::string type = required(*element, "type");
            const auto bytes = readBytes(in, *element);
            std::size_t consumed = 0;
            const auto value = Variant::deserialize(type, endian, bytes, consumed);
            if (consumed != bytes.size())
                VELMO_THROW("Buffer size and type size does not match");
            storage->set(key, value);
        }
    }
    return result;
}

std::shared_ptr<TiXmlDocument> StorageDecoderXml::getPackageInfo(std::istream& in, bool& textValues,
                                                                 bool& bigEndian)
{
    const Package package = readStream(in);
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

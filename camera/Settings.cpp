#include "camera/Settings.h"

#include "camera/settings/Keys.h"

#include "core/Exception.h"
#include "core/codecs/StorageDecoderIni.h"
#include "core/codecs/StorageDecoderXml.h"

#include <sstream>
#include <typeinfo>

namespace velmo::camera {
namespace {

/// In quotes a text can look like a number, or begin and end with blanks.
std::string unquoted(const std::string& text)
{
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

/// The value as it comes back from an INI file.
std::string iniValue(const Key& key, const std::string& text)
{
    if (key.kind.text.empty() || text.empty())
        return text;
    std::istringstream line("key = " + text);
    const auto read = exp::StorageDecoderIni::decode(line).first.get("key");
    const bool same = read->getTypeInfo() == typeid(std::string) && read->value<std::string>() == text;
    return same && unquoted(text) == text ? text : '"' + text + '"';
}

std::string sectionOf(const std::string& path)
{
    return path.substr(0, path.find('/'));
}

/// What stands in front of each value in an INI file: the section where it begins, what the setting does.
std::vector<std::string> makeHeads()
{
    std::vector<std::string> heads;
    std::string section;
    for (const Key& key : keys()) {
        std::string head;
        if (sectionOf(key.path) != section) {
            section = sectionOf(key.path);
            head = (heads.empty() ? "[" : "\n[") + section + "]\n";
        }
        const std::string limits = key.kind.limits();
        heads.push_back(head + "\n; " + key.sentence + ".\n; " + key.kind.shape() +
                        (limits.empty() ? "" : "; " + limits) + (key.unit.empty() ? "" : "; " + key.unit) +
                        "\n" + key.path.substr(section.size() + 1) + " =");
    }
    return heads;
}

} // namespace

Settings::Settings(const Tree& tree)
{
    add(tree, "");
}

Settings Settings::read(std::istream& in)
{
    if (!in)
        VELMO_THROW("settings cannot be read");
    in >> std::ws;
    const bool xml = in.peek() == '<';
    in.clear(in.rdstate() & ~std::ios::eofbit & ~std::ios::failbit); // an empty file is in order
    return Settings(xml ? exp::StorageDecoderXml::decode(in).first
                        : exp::StorageDecoderIni::decode(in).first);
}

void Settings::add(const Tree& group, const std::string& prefix)
{
    for (const auto& [name, value] : group)
        if (value->getTypeInfo() == typeid(Tree))
            add(value->value<Tree>(), prefix + name + '/');
        else
            put(prefix + name, *value);
}

void Settings::put(const std::string& path, const exp::Variant& value)
{
    const std::string text = value.toString();
    set(path, keyOf(path).kind.text.empty() ? text : unquoted(text), path);
}

void Settings::set(const std::string& path, const std::string& value, const std::string& what)
{
    const Key& key = keyOf(path);
    const bool isOn = value == "true", isOff = value == "false";
    const bool stands = !key.alone.empty() && (isOn || isOff);
    m_oTree.set(path, key.kind.read(!stands ? value : isOn ? key.alone : key.fallback, what));
}

std::string Settings::text(const std::string& path) const
{
    return text(keyOf(path));
}

std::string Settings::text(const Key& key) const
{
    const std::shared_ptr<exp::Variant> value = m_oTree.get(key.path);
    return value ? value->toString() : key.fallback;
}

std::vector<double> Settings::numbers(const std::string& path) const
{
    return keyOf(path).kind.numbers(text(path));
}

std::vector<std::string> Settings::list(const std::string& path) const
{
    return ValueKind::parts(text(path));
}

std::string Settings::ini() const
{
    static const std::vector<std::string> heads = makeHeads();
    std::string file;
    for (std::size_t n = 0; n < heads.size(); ++n) {
        const Key& key = keys()[n];
        const std::string value = iniValue(key, text(key));
        file += heads[n] + (value.empty() ? "" : " ") + value + "\n";
    }
    return file;
}

} // namespace velmo::camera

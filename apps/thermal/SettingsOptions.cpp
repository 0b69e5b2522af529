#include "apps/thermal/SettingsOptions.h"

#include "apps/thermal/Error.h"
#include "camera/settings/Keys.h"
#include "recordings/ByteFile.h"

#include <algorithm>
#include <cctype>

namespace thermal {

using namespace velmo::camera;

namespace {

Settings read(const std::string& path)
{
    std::ifstream file = velmo::recordings::openStream(path);
    try {
        return Settings::read(file);
    } catch (const std::exception& error) {
        throw UsageError(path + ": " + error.what());
    }
}

std::string helpOf(const Key& key)
{
    const std::string limits = key.kind.limits();
    return key.sentence + (limits.empty() ? "" : "; " + limits) + (key.kind.list ? "; may be repeated" : "") +
           (key.alone.empty() ? "" : "; alone: " + key.alone) +
           (key.fallback.empty() || key.kind.isFlag() ? "" : " [" + key.fallback + "]");
}

std::string joined(const std::vector<std::string>& texts, const char* separator)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : separator) + text;
    return all;
}

} // namespace

std::vector<std::string> withValuesLeftOut(std::vector<std::string> words)
{
    for (const Key& key : keys())
        for (std::size_t i = 0; !key.alone.empty() && i < words.size(); ++i) {
            const auto& values = key.kind.words;
            const bool follows =
                i + 1 < words.size() && std::find(values.begin(), values.end(), words[i + 1]) != values.end();
            if (words[i] == key.option && !follows)
                words[i] += '=' + key.alone;
        }
    return words;
}

std::string namingOptions(std::string message, const std::vector<std::string>& words)
{
    const auto typed = [&](const std::string& option) {
        return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
            return word == option || word.rfind(option + '=', 0) == 0;
        });
    };
    const auto partOfName = [](char letter) {
        return std::isalnum(static_cast<unsigned char>(letter)) != 0 ||
               std::string("-/.").find(letter) != std::string::npos;
    };
    const bool fromFile = typed("--settings");
    for (const Key& key : keys())
        for (std::size_t at = 0; !fromFile || typed(key.option); ++at) {
            at = message.find(key.path, at);
            if (at == std::string::npos)
                break;
            const std::size_t end = at + key.path.size();
            if ((at == 0 || !partOfName(message[at - 1])) &&
                (end == message.size() || !partOfName(message[end])))
                message.replace(at, key.path.size(), key.option);
        }
    return message;
}

void SettingsOptions::addTo(const Command& command, const std::vector<std::string>& sections)
{
    command
        .option("--settings", m_strFile,
                "A file of settings, as 'thermal settings' writes one; options stand above it")
        .form("FILE");
    const auto wanted = [&](const std::string& path) {
        return std::any_of(sections.begin(), sections.end(), [&](const std::string& section) {
            return path == section || path.rfind(section + "/", 0) == 0;
        });
    };
    if (wanted("temperature/unit"))
        command.flag("--celsius", m_bCelsius, "The same as --unit centikelvin");
    for (const Key& key : keys()) {
        if (!wanted(key.path))
            continue;
        Typed& typed = m_mapTyped[key.path];
        typed.m_strOption = key.option;
        if (key.kind.isFlag())
            command.flag(key.option, typed.m_bFlag, helpOf(key));
        else {
            Option option = command.option(key.option, typed.m_vecTexts, helpOf(key))
                                .form(joined(key.kind.shapes(), "|"));
            key.kind.list ? option.repeated() : option.values(1);
        }
    }
}

Settings SettingsOptions::settings(velmo::recordings::Outputs& outputs) const
{
    Settings settings;
    if (!m_strFile.empty()) {
        settings = read(m_strFile);
        outputs.protect({m_strFile});
    }
    for (const auto& [path, typed] : m_mapTyped) {
        if (typed.m_bFlag)
            settings.set(path, true);
        if (!typed.m_vecTexts.empty())
            settings.set(path, joined(typed.m_vecTexts, ","), typed.m_strOption);
    }
    if (m_bCelsius) {
        const auto unit = m_mapTyped.find("temperature/unit");
        if (!unit->second.m_vecTexts.empty() && unit->second.m_vecTexts[0] != "centikelvin")
            throw UsageError("--celsius: the unit is '" + unit->second.m_vecTexts[0] + "' already");
        settings.set("temperature/unit", std::string("centikelvin"));
    }
    return settings;
}

} // namespace thermal

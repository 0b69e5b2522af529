#pragma once

#include "apps/thermal/Options.h"
#include "camera/Settings.h"
#include "recordings/Outputs.h"

#include <map>
#include <string>
#include <vector>

namespace thermal {

/// The options of a command that are settings: each is a key of the table with a short name.
class SettingsOptions
{
public:
    /// Adds --settings, and an option for each setting of these sections; a section may be one setting.
    void addTo(const Command& command, const std::vector<std::string>& sections);

    /// What the file of --settings says, with what was typed above it. The file is protected from outputs.
    /// @throws Exception  that names the option, or the file and the setting
    velmo::camera::Settings settings(velmo::recordings::Outputs& outputs) const;

private:
    struct Typed
    {
        std::string m_strOption;
        bool m_bFlag = false;
        std::vector<std::string> m_vecTexts;
    };

    std::string m_strFile;
    bool m_bCelsius = false;
    std::map<std::string, Typed> m_mapTyped; ///< by the path of the setting
};

/// The words of a command line, where options that may stand alone have the value that this means:
/// "--denoise" becomes "--denoise=normal", unless one of its values follows.
std::vector<std::string> withValuesLeftOut(std::vector<std::string> words);

/// What is said of settings to a person who typed these words: by their options, but for those that only a
/// file of settings can have set.
std::string namingOptions(std::string message, const std::vector<std::string>& words);

} // namespace thermal

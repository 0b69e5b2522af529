#include "apps/thermal/Commands.h"
#include "apps/thermal/SettingsOptions.h"
#include "camera/settings/Reference.h"

#include <iostream>
#include <memory>

namespace thermal {

void addSettingsCommand(const Command& program)
{
    struct Options
    {
        SettingsOptions settings;
        bool reference = false;
    };
    auto options = std::make_shared<Options>();
    const Command command = program.sub(
        "settings", "Prints a file of all settings, with what they do: thermal settings > camera.ini");
    options->settings.addTo(command,
                            {"temperature", "pixels", "noise", "frame", "colours", "picture", "blobs"});
    command.flag("--reference", options->reference, "Print the page docs/settings.md instead");
    command.run([options] {
        velmo::recordings::Outputs none;
        std::cout << (options->reference ? velmo::camera::settingsReference()
                                         : options->settings.settings(none).ini());
    });
}

} // namespace thermal

#include "apps/thermal/Commands.h"
#include "apps/thermal/SettingsOptions.h"
#include "camera/settings/Reference.h"

#include <CLI/App.hpp>

#include <iostream>
#include <memory>

namespace thermal {

void addSettingsCommand(CLI::App& program)
{
    struct Options
    {
        SettingsOptions settings;
        bool reference = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App& command = *program.add_subcommand(
        "settings", "Prints a file of all settings, with what they do: thermal settings > camera.ini");
    options->settings.addTo(command,
                            {"temperature", "pixels", "noise", "frame", "colours", "picture", "blobs"});
    command.add_flag("--reference", options->reference, "Print the page docs/settings.md instead");
    command.callback([options] {
        velmo::recordings::Outputs none;
        std::cout << (options->reference ? velmo::camera::settingsReference()
                                         : options->settings.settings(none).ini());
    });
}

} // namespace thermal

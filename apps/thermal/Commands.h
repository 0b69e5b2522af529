#pragma once

namespace CLI {
class App;
}

namespace thermal {

// Each command adds itself, its options and what it does to the program.
void addBlobsCommand(CLI::App& program);
void addCleanCommand(CLI::App& program);
void addConvertCommand(CLI::App& program);
void addDemoCommand(CLI::App& program);
void addMeasureCommand(CLI::App& program);
void addPixelsCommand(CLI::App& program);
void addRenderCommand(CLI::App& program);
void addNoiseCommand(CLI::App& program);
void addPalettesCommand(CLI::App& program);
void addSettingsCommand(CLI::App& program);
void addUndistortCommand(CLI::App& program);

} // namespace thermal

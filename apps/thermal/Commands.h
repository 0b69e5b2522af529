#pragma once

#include "apps/thermal/Options.h"

namespace thermal {

// Each command adds itself, its options and what it does to the program.
void addBlobsCommand(const Command& program);
void addCleanCommand(const Command& program);
void addConvertCommand(const Command& program);
void addDemoCommand(const Command& program);
void addFlatCommand(const Command& program);
void addMeasureCommand(const Command& program);
void addPixelsCommand(const Command& program);
void addRenderCommand(const Command& program);
void addNoiseCommand(const Command& program);
void addPalettesCommand(const Command& program);
void addSettingsCommand(const Command& program);
void addUndistortCommand(const Command& program);

} // namespace thermal

// Palette files as a user hands them over: by path.

#include "fuzz/MemoryFile.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <iostream>

using Manager = velmo::vision::ColorPaletteManager;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MemoryFile file;
    std::cout.rdbuf(nullptr); // errors are printed
    Manager::m_stoAvailablePalettes.clear();
    Manager::m_stoSupportedPalettes.clear();
    Manager::loadFile(file.filled(data, size));
    for (const std::string& name : Manager::getSupportedPalettesNames())
        unlessRefused([&] { Manager::getPaletteColors(name); }); // of another type
    return 0;
}

// Palette files as a user hands them over: by path.

#include "core/Exception.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

using Manager = velmo::vision::ColorPaletteManager;

namespace {

/// A file without a name in any folder; it is gone with the process.
class UnnamedFile
{
public:
    UnnamedFile() : m_pFile(std::tmpfile()) { std::cout.rdbuf(nullptr); /* errors are printed */ }

    std::string filled(const std::uint8_t* data, std::size_t size)
    {
        if (m_pFile == nullptr || ftruncate(fileno(m_pFile), 0) != 0)
            std::abort();
        std::rewind(m_pFile);
        if (std::fwrite(data, 1, size, m_pFile) != size || std::fflush(m_pFile) != 0)
            std::abort();
        return "/proc/self/fd/" + std::to_string(fileno(m_pFile));
    }

private:
    std::FILE* m_pFile;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static UnnamedFile file;
    Manager::m_stoAvailablePalettes.clear();
    Manager::m_stoSupportedPalettes.clear();
    Manager::loadFile(file.filled(data, size));
    for (const std::string& name : Manager::getSupportedPalettesNames())
        try {
            Manager::getPaletteColors(name);
        } catch (const velmo::exp::Exception&) { // of another type
        }
    return 0;
}

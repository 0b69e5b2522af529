// Palettes of other programs; the first byte chooses the format.

#include "fuzz/ImageFuzz.h"

#include "recordings/PaletteFormats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* const names[] = {"a.csv", "a.pal", "a.gpl", "a.act", "a.lut"};
    if (size < 2)
        return 0;
    return unlessRefused([&] {
        const auto palette =
            velmo::recordings::importPalette(fileOf(data + 1, size - 1), names[data[0] % std::size(names)]);
        require(!palette.empty() && palette.size() % 3 == 0);
    });
}

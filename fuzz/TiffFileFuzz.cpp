// TIFF files, every page.

#include "fuzz/ImageFuzz.h"

#include "recordings/TiffFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return readAll(data, size, velmo::recordings::openTiff);
}

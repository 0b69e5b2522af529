// NumPy files: the dictionary in front, and the values behind it.

#include "fuzz/ImageFuzz.h"

#include "recordings/NpyFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return readAll(data, size, velmo::recordings::openNpy);
}

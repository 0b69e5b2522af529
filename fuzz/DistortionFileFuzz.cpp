// Maps of lens distortion, by path.

#include "fuzz/MemoryFile.h"
#include "vision/imgproc/DistortionCorrection.h"

using namespace velmo::vision;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MemoryFile file;
    return unlessRefused([&] {
        const auto records = DistortionCorrection::loadPixelCorrInfoFromPxm(file.filled(data, size), 0, 0);
        // Six samples make a record, whose source pixel lies inside the map.
        require(6 * records.size() <= size);
        for (std::size_t n = 0; n < records.size(); ++n) {
            const auto source = static_cast<std::ptrdiff_t>(n) + records[n].m_s16Offset;
            require(source >= 0 && source < static_cast<std::ptrdiff_t>(records.size()));
        }
        DistortionCorrection::loadPixelCorrInfoFromPxm(file.filled(data, size), 1,
                                                       static_cast<int>(records.size()));
    });
}

#include "vision/kernels/ColorConvertKernel.h"

#include "tests/kernels/KernelTest.h"

using namespace velmo::vision;

using Bytes = std::vector<unsigned char>;

constexpr int lengths = 300;

/// All 65536 inputs with the given first byte: triples, or pairs with both chroma values and one luma, the
/// other luma being another one.
const auto plane = [](int first, std::size_t bytesIn) {
    Bytes bytes;
    for (int rest = 0; rest < 65536; ++rest) {
        const int second = rest >> 8, third = rest & 255;
        if (bytesIn == 3)
            for (const int byte : {first, second, third})
                bytes.push_back(static_cast<unsigned char>(byte));
        else
            for (const int byte : {second, first, third, 255 - first})
                bytes.push_back(static_cast<unsigned char>(byte));
    }
    return bytes;
};

/// Every length up to 300, then every input there is.
const auto conversion = [](const velmo::exp::Forms<ConvertPixels>& forms, std::size_t bytesIn,
                           std::size_t bytesOut) {
    return kernel(forms, lengths + 256, [=](Random& random, int round, auto& form) {
        const auto length = static_cast<std::size_t>(bytesIn == 2 ? round & ~1 : round);
        const Bytes src = round < lengths ? random.values<unsigned char>(bytesIn * length)
                                          : plane(round - lengths, bytesIn);
        const std::size_t pixels = src.size() / bytesIn;
        Guarded<unsigned char> dst(bytesOut * pixels);
        form(src.data(), dst.data(), pixels);
        return Left() << dst.all;
    });
};

std::vector<KernelCase> colourKernels()
{
    std::vector<KernelCase> all{
        conversion(uyvyToBgr, 2, 3),   conversion(uyvyToRgb, 2, 3),   conversion(uy1vy0ToBgr, 2, 3),
        conversion(uy1vy0ToRgb, 2, 3), conversion(ycbcrToBgr, 3, 3),  conversion(bgrToYcbcr, 3, 3),
        conversion(rgbToYcbcr, 3, 3),  conversion(ycbcrToYuv2, 3, 2), conversion(swapRb, 3, 3),
    };
    all.push_back(kernel(lagYuyv, 3000, [](Random& random, int, auto& form) {
        const int total = random(0, 100), first = random(0, total);
        const auto pixels = static_cast<std::size_t>(random(0, total - first));
        const Bytes src = random.values<unsigned char>(2 * static_cast<std::size_t>(total));
        Guarded<unsigned char> dst(3 * pixels);
        form(src.data(), dst.data(), static_cast<std::size_t>(first), pixels);
        return Left() << dst.all;
    }));
    return all;
}

#include "tests/kernels/KernelTest.h"

#include <cctype>

namespace {

std::vector<KernelCase> allKernels()
{
    std::vector<KernelCase> all;
    for (const auto& family : {badPixelKernels(), blobKernels(), colourKernels(), denoiseKernels(),
                               noiseKernels(), paletteKernels()})
        all.insert(all.end(), family.begin(), family.end());
    return all;
}

using EveryKernel = testing::TestWithParam<KernelCase>;

TEST_P(EveryKernel, LeavesTheBitsOfItsPlainForm)
{
    Random random(7);
    for (int round = 0; round < GetParam().rounds && !HasFatalFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        GetParam().round(random, round);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, EveryKernel, testing::ValuesIn(allKernels()), [](const auto& kernel) {
    std::string name = kernel.param.name;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
});

} // namespace

// Palettes, and the humidity that one may show.

#include "core/physics/DewPointKernel.h"
#include "tests/kernels/KernelTest.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"

using namespace velmo::vision;
using namespace velmo::exp;

const auto entries = [](Random& random, std::size_t count) -> std::vector<unsigned int> {
    const auto all = random.values<int>(count);
    return {all.begin(), all.end()};
};

std::vector<KernelCase> paletteKernels()
{
    std::vector<KernelCase> all;
    all.push_back(kernel(palettize, 200, [](Random& random, int round, auto& form) {
        const auto in = random.values<unsigned short>(static_cast<std::size_t>(round));
        Guarded<unsigned char> out(3 * in.size());
        form(in.data(), out.data(), in.size(), entries(random, tableEntries).data());
        return Left() << out.all;
    }));
    all.push_back(kernel(stretch, 2000, [](Random& random, int round, auto& form) {
        const int points = round < 1900 ? 1 + round % 300 : random.pick({1, 2, 16, 123, 4096});
        const int span = round < 1900 ? random.pick({1, 2, points, points + 1, 2 * points, random(1, 2000)})
                                      : random.pick({4096, 16384, 65535, 65536});
        const auto palette = random.values<unsigned char>(3 * static_cast<std::size_t>(points));
        return Left() << form(palette, span, random.oneIn(2), {7, 7, 7}); // in used memory
    }));
    all.push_back(kernel(fillTable, 50, [](Random& random, int, auto& form) {
        const int min = random.pick({0, 0, 7000, 65534, 65535}),
                  max = random.pick({min, 65535, random(min, 65535)});
        const auto stretched = entries(random, static_cast<std::size_t>(max - min + 1));
        Guarded<unsigned int> table(tableEntries);
        form(table.data(), stretched.data(), min, max);
        return Left() << table.all;
    }));
    all.push_back(kernel(fillTableHumid, 20, [](Random& random, int round, auto& form) {
        std::vector<float> moisture(tableEntries);
        for (float& percent : moisture) // steps change at odd twentieths
            percent = round % 2 == 0 ? static_cast<float>(random(0, 2000)) / 20
                                     : static_cast<float>(random(0, 100000000)) / 1e6f;
        Guarded<unsigned int> table(tableEntries);
        form(table.data(), entries(random, humiditySteps).data(), moisture.data());
        return Left() << table.all;
    }));
    all.push_back(kernel(surfaceMoisture, 300, [](Random& random, int round, auto& form) {
        std::vector<float> celsius(static_cast<std::size_t>(round));
        for (float& value : celsius)
            value = random.oneIn(20) ? random.pick({-243.12f, std::nextafter(-243.12f, 0.0f), 3e38f, -3e38f,
                                                    INFINITY, -INFINITY, NAN})
                                     : static_cast<float>(random(-27315, 38220)) / 100;
        Guarded<float> moisture(celsius.size());
        const MarkedFloat warm = random.pick({-243.12f, -250.0f, -20.0f, 20.3f, 382.0f}),
                          percent = random.pick({0.0f, 37.7f, 100.0f});
        form({quantity::Temperature<MarkedFloat>(warm), quantity::Relation<MarkedFloat>(percent)},
             celsius.data(), moisture.data(), celsius.size());
        return Left() << moisture.all;
    }));
    return all;
}

TEST(StretchedPalette, IsMadeByTheFastFormHere)
{
    EXPECT_TRUE(ownStretchIsExact());
}

TEST(Exponential, IsThatOfTheMathematicsLibraryToTwoUnitsInTheLastPlace)
{
    for (double x = -708; x < 709; x += 0.0137)
        EXPECT_NEAR(exponential(x) / std::exp(x), 1, 5e-16) << x;
    EXPECT_EQ(exponential(0), 1);
    EXPECT_TRUE(std::isnan(exponential(NAN)));
}

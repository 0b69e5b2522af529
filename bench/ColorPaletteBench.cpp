#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::vision;

namespace {

using Palette = std::vector<unsigned char>;

constexpr unsigned short lowest = 7800, highest = 9900;

/// Sixteen colour points from dark blue to white.
Palette points(unsigned char blue)
{
    Palette palette;
    for (int n = 0; n < 16; ++n)
        for (const int value : {17 * n, 255 - std::abs(255 - 34 * n), blue + 7 * n})
            palette.push_back(static_cast<unsigned char>(value));
    return palette;
}

/// The table of that palette over that range.
std::vector<unsigned int> tableOf(const Palette& palette)
{
    std::vector<unsigned int> table(tableEntries);
    fillTable(table.data(), stretchPalette(palette, highest - lowest + 1, true).data(), lowest, highest);
    return table;
}

Job coloring(const cv::Mat_<unsigned short>& frame)
{
    const auto out = std::make_shared<cv::Mat_<cv::Vec3b>>(frame.size());
    Job job(5 * frame.total(), frame.total());
    job.loop(palettize, [=, table = tableOf(points(80))](auto& form) {
        form(frame[0], (*out)[0]->val, frame.total(), table.data());
    });
    // The usual call, with a built-in map: OpenCV works the map out anew each time.
    job.peer("scale+applyColorMap", [frame, scaled = cv::Mat(), mapped = cv::Mat()]() mutable {
        constexpr double scale = 255.0 / (highest - lowest);
        cv::convertScaleAbs(frame, scaled, scale, -scale * lowest);
        cv::applyColorMap(scaled, mapped, cv::COLORMAP_INFERNO);
    });
    return job;
}

Job palettise(cv::Size size)
{
    Job job = coloring(scene(size));
    if (size.width == 240)
        job.atMost(6.5, "memcpy");
    if (size.width == 640)
        job.atLeast(2.8, "plain").atLeast(5, "scale+applyColorMap").instructions(4.06);
    return job;
}

Job palettiseRandom(cv::Size size)
{
    Job job = coloring(noise(size));
    if (size.width == 640)
        job.atLeast(1.6, "plain");
    return job;
}

/// The table for a new palette each time, as for a camera whose range changes with every frame.
struct Rebuild
{
    explicit Rebuild(int entries) : span(entries), table(tableEntries) {}

    Palette& next() { return palettes[turn ^= 1]; }
    unsigned short max() const { return static_cast<unsigned short>(span - 1); }

    void ours() { converter.resizeLookupTable(0, max(), next()); }
    void oursAgain() { converter.resizeLookupTable(0, max(), palettes[turn]); }
    void plain() { fillTable.plain(table.data(), stretch.plain(next(), span, true, {}).data(), 0, max()); }
    void resized()
    {
        Palette& palette = next();
        cv::resize(cv::Mat(1, 16, CV_8UC3, palette.data()), row, cv::Size(span, 1), 0, 0, cv::INTER_LINEAR);
    }

    int span;
    ColorPaletteConverter converter{true};
    Palette palettes[2] = {points(80), points(90)};
    std::vector<unsigned int> table;
    cv::Mat row;
    int turn = 0;
};

Job rebuildTable(cv::Size size)
{
    const auto rebuild = std::make_shared<Rebuild>(size.width);
    Job job(2 * 4 * tableEntries, tableEntries, "entry");
    job.ours([rebuild] { rebuild->ours(); });
    job.plain([rebuild] { rebuild->plain(); });
    job.peer("resize alone", [rebuild] { rebuild->resized(); });
    job.peer("same palette and span", [rebuild] { rebuild->oursAgain(); });
    if (size.width == 4096)
        job.atMost(1.2, "resize alone").atLeast(1.5, "plain");
    return job;
}

Job stretching(cv::Size size)
{
    const auto entries = static_cast<std::size_t>(size.width);
    return Job(4 * entries, entries, "entry").loop(stretch, [=, palette = points(80)](auto& form) {
        benchmark::DoNotOptimize(form(palette, size.width, true, {}));
    });
}

Job filling(cv::Size /*table*/)
{
    const auto table = std::make_shared<std::vector<unsigned int>>(tableEntries);
    Job job(2 * 4 * tableEntries, tableEntries, "entry");
    return job.loop(fillTable, [=, stretched = stretch(points(80), highest - lowest + 1, true, {})](
                                   auto& form) { form(table->data(), stretched.data(), lowest, highest); });
}

const Registration scenes("palettise", palettise);
const Registration random("palettise random", palettiseRandom);
const Registration rebuilds("palette table rebuild", rebuildTable,
                            {{256, 1}, {4096, 1}, {16384, 1}, {65536, 1}});
const Registration stretches("palette stretched", stretching, {{4096, 1}});
const Registration fills("palette table filled", filling, {{65536, 1}});

} // namespace

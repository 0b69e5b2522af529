#include "bench/Bench.h"
#include "bench/Scene.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"

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

/// One frame coloured by us, by the plain form and by what a user would write.
struct Coloring
{
    explicit Coloring(const ColorPaletteConverter::Frame& frame)
        : src(frame), dst(frame.size()), expected(frame.size()), converter(true), palette(points(80)),
          table(tableEntries)
    {
        converter.resizeLookupTable(lowest, highest, palette);
        fillTable.plain(table.data(), stretchByResize(palette, highest - lowest + 1, true).data(), lowest,
                        highest);
    }

    void ours() { converter.palletizeFast(src, dst); }
    void plain() { palettize.plain(src[0], expected[0]->val, src.total(), table.data()); }

    // The usual call, with a built-in map: OpenCV works the map out anew each time.
    void applied()
    {
        cv::convertScaleAbs(src, scaled, 255.0 / (highest - lowest), -255.0 * lowest / (highest - lowest));
        cv::applyColorMap(scaled, mapped, cv::COLORMAP_INFERNO);
    }

    ColorPaletteConverter::Frame src;
    ColorPaletteConverter::Picture dst, expected;
    ColorPaletteConverter converter;
    Palette palette;
    std::vector<unsigned int> table;
    cv::Mat scaled, mapped;
};

Job coloring(const ColorPaletteConverter::Frame& frame)
{
    const auto job = std::make_shared<Coloring>(frame);
    job->ours();
    job->plain();
    Job result(5 * frame.total(), frame.total());
    result.check(cv::norm(job->dst, job->expected, cv::NORM_INF) == 0);
    result.ours([job] { job->ours(); });
    result.plain([job] { job->plain(); });
    result.peer("scale+applyColorMap", [job] { job->applied(); });
    return result;
}

Job palettise(cv::Size size)
{
    Job job = coloring(scene(size));
    if (size.width == 240)
        job.atMost(6.5, "memcpy");
    if (size.width == 640)
        job.atLeast(2.8, "plain").atLeast(5, "scale+applyColorMap");
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
    explicit Rebuild(int entries)
        : span(entries), converter(true), palettes{points(80), points(90)}, table(tableEntries)
    {}

    Palette& next() { return palettes[turn ^= 1]; }
    unsigned short max() const { return static_cast<unsigned short>(span - 1); }

    void ours() { converter.resizeLookupTable(0, max(), next()); }
    void oursAgain() { converter.resizeLookupTable(0, max(), palettes[turn]); }

    void plain() { fillTable.plain(table.data(), stretchByResize(next(), span, true).data(), 0, max()); }

    void resized()
    {
        Palette& palette = next();
        cv::resize(cv::Mat(1, 16, CV_8UC3, palette.data()), row, cv::Size(span, 1), 0, 0, cv::INTER_LINEAR);
    }

    int span;
    ColorPaletteConverter converter;
    Palette palettes[2];
    std::vector<unsigned int> table;
    cv::Mat row;
    int turn = 0;
};

/// Whether the converter's table shows every value as the plain one does.
bool agree(Rebuild& rebuild)
{
    cv::Mat_<unsigned short> all(256, 256);
    for (int v = 0; v < tableEntries; ++v)
        all(v / 256, v % 256) = static_cast<unsigned short>(v);
    ColorPaletteConverter::Picture ours(all.size()), expected(all.size());
    rebuild.ours();
    rebuild.turn ^= 1;
    rebuild.plain();
    rebuild.converter.palletizeFast(all, ours);
    palettize.plain(all[0], expected[0]->val, all.total(), rebuild.table.data());
    return cv::norm(ours, expected, cv::NORM_INF) == 0;
}

Job rebuildTable(cv::Size size)
{
    const auto rebuild = std::make_shared<Rebuild>(size.width);
    Job job(2 * 4 * tableEntries, tableEntries, "entry");
    job.check(agree(*rebuild));
    job.ours([rebuild] { rebuild->ours(); });
    job.plain([rebuild] { rebuild->plain(); });
    job.peer("resize alone", [rebuild] { rebuild->resized(); });
    job.peer("same palette and span", [rebuild] { rebuild->oursAgain(); });
    if (size.width == 4096)
        job.atMost(1.2, "resize alone").atLeast(1.5, "plain");
    return job;
}

const Registration scenes("palettise", palettise);
const Registration random("palettise random", palettiseRandom);
const Registration rebuilds("palette table rebuild", rebuildTable,
                            {{256, 1}, {4096, 1}, {16384, 1}, {65536, 1}});

} // namespace

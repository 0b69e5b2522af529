#include "bench/Bench.h"
#include "bench/Scene.h"
#include "core/physics/DewPoint.h"
#include "core/physics/DewPointKernel.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"
#include "vision/radiometry/RadiometricTools.h"

#include <memory>

using namespace velmo::vision;
using velmo::exp::DewPoint;

namespace {

using Air = ColorPaletteConverter::AirTemperature;
using Humidity = ColorPaletteConverter::AirHumidity;

const std::vector<unsigned char> greenToRed = {0, 50, 0, 0, 255, 0, 255, 255, 0, 255, 0, 0};

/// A humidity picture of air that stays as it is, beside the same picture from a ready table.
struct Steady
{
    explicit Steady(cv::Size size) : src(scene(size)), dst(size), palette(greenToRed), converter(true)
    {
        src += 20000; // room temperature
        ours();
    }

    void ours() { converter.palletizeHumid(src, dst, Air(20.0f), Humidity(50.0f), false, palette); }
    void fast() { converter.palletizeFast(src, dst); }

    ColorPaletteConverter::Frame src;
    ColorPaletteConverter::Picture dst;
    std::vector<unsigned char> palette;
    ColorPaletteConverter converter;
};

Job steady(cv::Size size)
{
    const auto stream = std::make_shared<Steady>(size);
    Job job(5 * size.area(), static_cast<std::size_t>(size.area()));
    job.ours([stream] { stream->ours(); });
    job.peer("palletizeFast", [stream] { stream->fast(); });
    if (size.width == 640)
        job.atMost(1.05, "palletizeFast");
    return job;
}

/// The table for other air each time.
struct Rebuild
{
    Rebuild() : palette(greenToRed), converter(true), table(tableEntries) {}

    Air air() { return Air(20.0f + static_cast<float>(turn++ % 8)); }

    void ours() { converter.resizeLookupTableHumid(air(), Humidity(50.0f), palette); }

    /// Value by value through the public functions.
    void plain()
    {
        const Air around = air();
        const std::vector<unsigned int> stretched = stretch.plain(palette, humiditySteps, true, {});
        std::vector<float> moisture;
        moisture.reserve(tableEntries);
        for (int v = 0; v < tableEntries; ++v)
            moisture.push_back(
                DewPoint::calcSurfaceMoisture({RadiometricTools::getFloat(static_cast<unsigned short>(v))},
                                              around, Humidity(50.0f))
                    .front());
        fillTableHumid.plain(table.data(), stretched.data(), moisture.data());
    }

    /// Whether the converter's table shows every value as the plain one does.
    bool agrees()
    {
        plain();
        turn = 0;
        cv::Mat_<unsigned short> all(256, 256);
        for (int v = 0; v < tableEntries; ++v)
            all(v / 256, v % 256) = static_cast<unsigned short>(v);
        ColorPaletteConverter::Picture shown(all.size()), expected(all.size());
        converter.palletizeHumid(all, shown, air(), Humidity(50.0f), true, palette);
        palettize.plain(all[0], expected[0]->val, all.total(), table.data());
        return cv::norm(shown, expected, cv::NORM_INF) == 0;
    }

    std::vector<unsigned char> palette;
    ColorPaletteConverter converter;
    std::vector<unsigned int> table;
    int turn = 0;
};

Job rebuildTable(cv::Size)
{
    const auto rebuild = std::make_shared<Rebuild>();
    Job job(2 * 4 * tableEntries, tableEntries, "entry");
    job.check(rebuild->agrees());
    job.ours([rebuild] { rebuild->ours(); });
    job.plain([rebuild] { rebuild->plain(); });
    job.atLeast(1.5, "plain");
    return job;
}

/// The table alone, from humidities at surfaces.
Job filling(cv::Size /*table*/)
{
    const auto table = std::make_shared<std::vector<unsigned int>>(tableEntries);
    std::vector<float> moisture(tableEntries);
    for (std::size_t v = 0; v < moisture.size(); ++v)
        moisture[v] = static_cast<float>(v) * (100.0f / 65535);
    Job job(2 * 4 * tableEntries, tableEntries, "entry");
    return job.loop(fillTableHumid,
                    [=, stretched = stretch(greenToRed, humiditySteps, true, {})](auto& form) {
                        form(table->data(), stretched.data(), moisture.data());
                    });
}

/// Humidity at as many surfaces as there are frame values.
Job moisture(cv::Size size)
{
    const auto count = static_cast<std::size_t>(size.width);
    const auto out = std::make_shared<std::vector<float>>(count);
    std::vector<float> celsius(count);
    for (std::size_t v = 0; v < count; ++v)
        celsius[v] = RadiometricTools::getFloat(static_cast<unsigned short>(v));
    const velmo::exp::MoistAir air(Air(20.0f), Humidity(50.0f));
    Job job(8 * count, count, "surface");
    return job.loop(velmo::exp::surfaceMoisture,
                    [=](auto& form) { form(air, celsius.data(), out->data(), count); });
}

const Registration fills("humidity table filled", filling, {{65536, 1}});
const Registration surfaces("surface moisture", moisture, {{65536, 1}});
const Registration pictures("humidity", steady);
const Registration rebuilds("humidity table rebuild", rebuildTable, {{65536, 1}});

} // namespace

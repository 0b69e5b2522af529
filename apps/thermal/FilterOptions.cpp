#include "apps/thermal/FilterOptions.h"

#include "camera/settings/Parse.h"
#include "camera/stages/BadPixelStage.h"
#include "camera/stages/DownSizeStage.h"
#include "camera/stages/PatternStage.h"
#include "camera/stages/SpatialStage.h"
#include "camera/stages/TemporalStage.h"
#include "recordings/PixelFiles.h"

#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"

#include <CLI/App.hpp>

namespace thermal {

using namespace velmo::camera;

namespace {

using velmo::exp::vision::SpatialNoiseRemover;
using velmo::exp::vision::StaticPatternRemover;
using Temporal = velmo::exp::vision::TemporalNoiseReduction<unsigned short>;

const Form patternForm = {{"THRESHOLD", Field::Kind::Whole, 0, StaticPatternRemover::s32MaxThreshold},
                          {"LINE", Field::Kind::Whole, 0, StaticPatternRemover::s32MaxLimit},
                          {"FRAME", Field::Kind::Whole, 0, StaticPatternRemover::s32MaxLimit}};
const Form temporalForm = {{"GAIN", Field::Kind::Whole, 0, Temporal::u8MaxControlGain},
                           {"FACTOR", Field::Kind::Whole, 0, Temporal::u16MaxFeedbackFactor}};
const Form spatialForm = {{"GAIN", Field::Kind::Whole, 0, SpatialNoiseRemover::s32MaxGain}};

std::vector<int> numbersOf(const std::string& text, const std::string& option, const Form& form)
{
    const std::vector<double> values = parseForm(text, option, form);
    return {values.begin(), values.end()};
}

} // namespace

void FilterOptions::addTo(CLI::App& command)
{
    command
        .add_option("--bad-pixels", badPixels,
                    "Replace defective pixels before anything else: records that pixels records wrote")
        ->type_name("FILE");
    command.add_flag("--denoise", denoise,
                     std::string("All three noise filters; the same as --pattern ") + pDefaultPattern +
                         " --temporal " + pDefaultTemporal + " --spatial " + pDefaultSpatial +
                         ", each of which may be given another value");
    command
        .add_option(
            "--pattern", pattern,
            "Static pattern remover: learns where a pixel differs from its neighbours by less than THRESHOLD "
            "(0 to 100), takes away at most LINE per column and FRAME per pixel (0 to 31)")
        ->type_name("THRESHOLD:LINE:FRAME");
    command
        .add_option("--temporal", temporal,
                    "Temporal noise filter: GAIN 0 to 16, the higher the sooner it lets changes pass; "
                    "FACTOR 0 to 2048, the higher the smoother")
        ->type_name("GAIN:FACTOR");
    command.add_option("--spatial", spatial, "Spatial noise remover: GAIN 0 to 31, the higher the smoother")
        ->type_name("GAIN");
    command.add_option("--downsize", downsize, "Shrink frames of 240x180 to 160x120 or 120x90")
        ->type_name("WxH");
}

bool FilterOptions::any() const
{
    return !badPixels.empty() || denoise || !pattern.empty() || !temporal.empty() || !spatial.empty() ||
           !downsize.empty();
}

Chain makeChain(const FilterOptions& options)
{
    Chain chain;
    if (!options.badPixels.empty())
        chain.add(makeBadPixelStage(options.badPixels, velmo::recordings::readRecords(options.badPixels)));
    addFilters(chain, options);
    return chain;
}

void addFilters(Chain& chain, const FilterOptions& options)
{
    const auto chosen = [&](const std::string& typed, const char* standard) {
        return typed.empty() && options.denoise ? std::string(standard) : typed;
    };
    if (const std::string text = chosen(options.pattern, FilterOptions::pDefaultPattern); !text.empty()) {
        const std::vector<int> values = numbersOf(text, "--pattern", patternForm);
        chain.add(makePatternStage(values[0], values[1], values[2]));
    }
    if (const std::string text = chosen(options.temporal, FilterOptions::pDefaultTemporal); !text.empty()) {
        const std::vector<int> values = numbersOf(text, "--temporal", temporalForm);
        chain.add(makeTemporalStage(values[0], values[1]));
    }
    if (const std::string text = chosen(options.spatial, FilterOptions::pDefaultSpatial); !text.empty())
        chain.add(makeSpatialStage(numbersOf(text, "--spatial", spatialForm)[0]));
    if (!options.downsize.empty())
        chain.add(makeDownSizeStage(parseSize(options.downsize, "--downsize")));
}

} // namespace thermal

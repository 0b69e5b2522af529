#include "apps/thermal/FilterStages.h"

#include "apps/thermal/Error.h"
#include "camera/settings/Parse.h"
#include "camera/stages/BadPixelStage.h"

#include "vision/imgproc/DownSize.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"

#include <CLI/App.hpp>

#include <memory>
#include <utility>

namespace thermal {
namespace {

using velmo::exp::vision::DownSize;
using velmo::exp::vision::SpatialNoiseRemover;
using velmo::exp::vision::StaticPatternRemover;
using velmo::exp::vision::TemporalNoiseReduction;

constexpr int s32MaxThreshold = 100;
constexpr int s32MaxLimit = 31;

/// A value v as v - 32768: unlike a cast it keeps the order of values above 32767 (54 degrees Celsius), and
/// full scale stays the one saturated value. In the same memory.
cv::Mat_<short> toSigned(Frame& frame)
{
    for (int r = 0; r < frame.rows; ++r) {
        unsigned short* row = frame[r];
        for (int c = 0; c < frame.cols; ++c)
            row[c] ^= 0x8000;
    }
    return cv::Mat_<short>(frame.rows, frame.cols, reinterpret_cast<short*>(frame.data), frame.step);
}

/// A filter for signed values among stages.
class SignedStage : public Stage
{
public:
    explicit SignedStage(std::string name) : m_strName(std::move(name)) {}

    std::string name() const override { return m_strName; }

    void apply(Frame& frame) override
    {
        cv::Mat_<short> in = toSigned(frame);
        m_oOut.create(outSize(frame.size()));
        cv::Mat_<short> out(m_oOut.rows, m_oOut.cols, reinterpret_cast<short*>(m_oOut.data), m_oOut.step);
        filter(in, out);
        toSigned(m_oOut); // its own inverse
        frame = m_oOut;
    }

private:
    virtual cv::Size outSize(cv::Size inSize) const { return inSize; }
    virtual void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) = 0;

    std::string m_strName;
    Frame m_oOut;
};

class PatternStage : public SignedStage
{
public:
    PatternStage(const std::string& text, int threshold, int line, int frame)
        : SignedStage("pattern " + text), m_oFilter(threshold, line, frame)
    {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    StaticPatternRemover m_oFilter;
};

class TemporalStage : public Stage
{
public:
    TemporalStage(const std::string& text, int gain, int factor)
        : m_strName("temporal " + text),
          m_oFilter(static_cast<unsigned char>(gain), static_cast<unsigned short>(factor))
    {}

    std::string name() const override { return m_strName; }
    void apply(Frame& frame) override { m_oFilter.process(frame); }

private:
    std::string m_strName;
    TemporalNoiseReduction<unsigned short> m_oFilter;
};

class SpatialStage : public SignedStage
{
public:
    explicit SpatialStage(int gain) : SignedStage("spatial " + std::to_string(gain)), m_oFilter(gain) {}

private:
    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override { m_oFilter.process(in, out); }

    SpatialNoiseRemover m_oFilter;
};

class DownSizeStage : public SignedStage
{
public:
    explicit DownSizeStage(cv::Size size)
        : SignedStage("downsize " + std::to_string(size.width) + "x" + std::to_string(size.height)),
          m_oSize(size)
    {}

private:
    cv::Size outSize(cv::Size inSize) const override
    {
        if (inSize != cv::Size(240, 180))
            throw UsageError("--downsize: takes frames of 240x180, these are " +
                             std::to_string(inSize.width) + "x" + std::to_string(inSize.height));
        return m_oSize;
    }

    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override
    {
        if (m_oSize.width == 160)
            DownSize::resize240To160(in, out);
        else
            DownSize::resize240To120(in, out);
    }

    cv::Size m_oSize;
};

/// The parts of an option that has as many of them as `form`.
std::vector<std::string> parts(const std::string& text, const std::string& option, const std::string& form)
{
    std::vector<std::string> found = split(text, ':');
    if (found.size() != split(form, ':').size())
        throw UsageError(option + ": '" + text + "' is not " + form);
    return found;
}

std::unique_ptr<Stage> makePattern(const std::string& text)
{
    const auto values = parts(text, "--pattern", "THRESHOLD:LINE:FRAME");
    const int threshold = parseInt(values[0], "--pattern threshold", 0, s32MaxThreshold);
    const int line = parseInt(values[1], "--pattern line limit", 0, s32MaxLimit);
    const int frame = parseInt(values[2], "--pattern frame limit", 0, s32MaxLimit);
    return std::make_unique<PatternStage>(text, threshold, line, frame);
}

std::unique_ptr<Stage> makeTemporal(const std::string& text)
{
    using Temporal = TemporalNoiseReduction<unsigned short>;
    const auto values = parts(text, "--temporal", "GAIN:FACTOR");
    const int gain = parseInt(values[0], "--temporal gain", 0, Temporal::u8MaxControlGain);
    const int factor = parseInt(values[1], "--temporal factor", 0, Temporal::u16MaxFeedbackFactor);
    return std::make_unique<TemporalStage>(text, gain, factor);
}

std::unique_ptr<Stage> makeSpatial(const std::string& text)
{
    return std::make_unique<SpatialStage>(parseInt(text, "--spatial", 0, SpatialNoiseRemover::s32MaxGain));
}

std::unique_ptr<Stage> makeDownSize(const std::string& text)
{
    if (text != "160x120" && text != "120x90")
        throw UsageError("--downsize: '" + text + "' is not 160x120 or 120x90");
    return std::make_unique<DownSizeStage>(parseSize(text, "--downsize"));
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
        chain.add(makeBadPixels(options.badPixels));
    addFilters(chain, options);
    return chain;
}

void addFilters(Chain& chain, const FilterOptions& options)
{
    const auto chosen = [&](const std::string& typed, const char* standard) {
        return typed.empty() && options.denoise ? std::string(standard) : typed;
    };
    if (const std::string text = chosen(options.pattern, FilterOptions::pDefaultPattern); !text.empty())
        chain.add(makePattern(text));
    if (const std::string text = chosen(options.temporal, FilterOptions::pDefaultTemporal); !text.empty())
        chain.add(makeTemporal(text));
    if (const std::string text = chosen(options.spatial, FilterOptions::pDefaultSpatial); !text.empty())
        chain.add(makeSpatial(text));
    if (!options.downsize.empty())
        chain.add(makeDownSize(options.downsize));
}

} // namespace thermal

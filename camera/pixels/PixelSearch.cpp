#include "camera/pixels/PixelSearch.h"

#include "camera/pixels/OddSpots.h"
#include "camera/pixels/SearchRules.h"

#include "vision/imgproc/BadPixel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace velmo::camera {
namespace {

using exp::vision::BadPixelTools;

unsigned int libraryFlags(int faults)
{
    unsigned int flags = 0;
    if ((faults & (Dead | Stuck | Hot | Cold)) != 0)
        flags |= BadPixelTools::u32BadHomogenity;
    if ((faults & (Noisy | Twinkling)) != 0)
        flags |= BadPixelTools::u32BadNetd;
    if ((faults & Weak) != 0)
        flags |= BadPixelTools::u32BadCurve;
    if ((faults & (BadRow | BadColumn)) != 0)
        flags |= BadPixelTools::u32BadRowCol;
    return flags;
}

/// The size of the connected group of each pixel that is not 0.
PixelMap sizesOfGroups(const PixelMap& faults)
{
    cv::Mat_<int> labels, boxes, sizes(faults.size(), 0);
    cv::Mat_<double> centres;
    cv::connectedComponentsWithStats(faults != 0, labels, boxes, centres, 8);
    for (int y = 0; y < faults.rows; ++y)
        for (int x = 0; x < faults.cols; ++x)
            if (labels(y, x) != 0)
                sizes(y, x) = boxes(labels(y, x), cv::CC_STAT_AREA);
    return sizes;
}

} // namespace

const std::vector<PixelReason>& pixelFaults()
{
    static const std::vector<PixelReason> faults = {
        {"dead", Dead, {60, 60, 255}},         {"stuck", Stuck, {0, 140, 255}},
        {"hot", Hot, {0, 220, 255}},           {"cold", Cold, {255, 160, 0}},
        {"noisy", Noisy, {80, 220, 80}},       {"twinkling", Twinkling, {200, 255, 120}},
        {"weak", Weak, {255, 80, 255}},        {"row", BadRow, {255, 255, 0}},
        {"column", BadColumn, {200, 120, 160}}};
    return faults;
}

PixelMap PixelFindings::map() const
{
    PixelMap flags(faults.size());
    std::transform(faults.begin(), faults.end(), flags.begin(),
                   [](int fault) { return static_cast<int>(libraryFlags(fault)); });
    return flags;
}

std::string PixelFindings::list() const
{
    std::ostringstream text;
    text << "x,y,flags,reasons,deviations,cluster\n" << std::fixed << std::setprecision(1);
    for (int y = 0; y < faults.rows; ++y)
        for (int x = 0; x < faults.cols; ++x)
            if (faults(y, x) != 0)
                text << x << ',' << y << ',' << libraryFlags(faults(y, x)) << ','
                     << reasonsOf(faults(y, x), pixelFaults()) << ',' << deviations(y, x) << ','
                     << clusters(y, x) << '\n';
    return text.str();
}

std::string PixelFindings::overshot() const
{
    if (20 * count() <= faults.total())
        return {};
    std::string name;
    int most = 0;
    for (const PixelReason& reason : pixelFaults()) {
        const int found = cv::countNonZero(PixelMap(faults & static_cast<int>(reason.flag)));
        if (found > most) {
            most = found;
            name = reason.name;
        }
    }
    return name;
}

Suspects::Suspects(const PixelStatistics& numbers)
    : statistics(numbers), mean(numbers.mean()), bad(mean.size(), 0)
{
    findings.faults = PixelMap(mean.size(), 0);
    findings.deviations = cv::Mat_<float>(mean.size(), 0.0F);
    findings.frames = numbers.m_nFrames;
}

void Suspects::flag(cv::Point pixel, PixelFault fault, float deviations)
{
    findings.faults(pixel) |= fault;
    if (std::abs(deviations) > std::abs(findings.deviations(pixel)))
        findings.deviations(pixel) = deviations;
    bad(pixel) = 1;
}

void findHotAndCold(Suspects& suspects)
{
    // A picture or two of the scene: small things in it stay where they are, so that only what is far out is
    // safe.
    constexpr std::size_t few = 3;
    constexpr float farOut = 14;
    constexpr float inMost = 0.4F; // of the frames less those on the other side, far by itself
    OddRule rule;
    if (suspects.statistics.m_nFrames <= few)
        rule.threshold = farOut;
    Mask bad = suspects.bad.clone();
    OddSpots(suspects.mean, bad, rule).find([&](cv::Point pixel, float deviations) {
        if (suspects.statistics.m_nFrames == 1 ||
            std::abs(suspects.statistics.m_oPersistent(pixel)) >= inMost)
            suspects.flag(pixel, deviations > 0 ? Hot : Cold, deviations);
    });
}

PixelSearch::PixelSearch(const Frame& shutter) : m_pStatistics(std::make_unique<PixelStatistics>(shutter)) {}
PixelSearch::~PixelSearch() = default;
PixelSearch::PixelSearch(PixelSearch&&) noexcept = default;
PixelSearch& PixelSearch::operator=(PixelSearch&&) noexcept = default;

void PixelSearch::add(const Frame& frame)
{
    m_pStatistics->add(frame);
}

std::size_t PixelSearch::frames() const
{
    return m_pStatistics->m_nFrames;
}

Frame PixelSearch::mean() const
{
    Frame mean;
    m_pStatistics->mean().convertTo(mean, CV_16U, 1, 32768);
    return mean;
}

PixelFindings PixelSearch::find() const
{
    if (frames() == 0)
        VELMO_THROW("a search for defective pixels without a frame");
    Suspects suspects(*m_pStatistics);
    findDead(suspects);
    findStuck(suspects);
    findLines(suspects);
    const Mask before = suspects.bad.clone();
    findHotAndCold(suspects);
    findRestless(suspects, before);
    findWeak(suspects);
    suspects.findings.clusters = sizesOfGroups(suspects.findings.faults);
    return suspects.findings;
}

} // namespace velmo::camera

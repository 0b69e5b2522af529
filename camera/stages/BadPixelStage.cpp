#include "camera/stages/BadPixelStage.h"

#include "camera/pixels/PixelSearch.h"
#include "camera/pixels/Replacements.h"
#include "camera/settings/Parse.h"

#include "core/Exception.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

namespace velmo::camera {
namespace {

using exp::vision::BadPixel;
using exp::vision::Pixel;

class BadPixelStage : public Stage
{
public:
    BadPixelStage(std::string origin, std::vector<BadPixel> records)
        : m_strOrigin(std::move(origin)), m_vecRecords(std::move(records)), m_vecMeans(m_vecRecords.size())
    {}

    std::string name() const override { return "bad pixels " + std::to_string(m_vecRecords.size()); }

    void apply(Frame& frame) override
    {
        checkPositions(frame.size());
        // All means first: a replacement pixel may itself be replaced, in files made by hand.
        for (std::size_t n = 0; n < m_vecRecords.size(); ++n)
            m_vecMeans[n] = meanOf(frame, m_vecRecords[n]);
        for (std::size_t n = 0; n < m_vecRecords.size(); ++n)
            frame(m_vecRecords[n].pixel.y, m_vecRecords[n].pixel.x) = m_vecMeans[n];
    }

private:
    static unsigned short meanOf(const Frame& frame, const BadPixel& record)
    {
        constexpr std::int64_t noise = 8; // counts: differences below say nothing
        const auto value = [&](int slot) -> std::int64_t {
            const Pixel good = record.replacePixel[slot];
            return frame(good.y, good.x);
        };
        const std::int64_t right = value(0), below = value(1), above = value(2), left = value(3);
        const std::int64_t across = std::abs(left - right) + noise, along = std::abs(above - below) + noise;
        const std::int64_t whole = across + along; // half of twice that: to the nearest
        return static_cast<unsigned short>(((left + right) * along + (above + below) * across + whole) /
                                           (2 * whole));
    }

    void checkPositions(cv::Size size)
    {
        if (size == m_oChecked)
            return;
        for (const BadPixel& record : m_vecRecords) {
            checkPosition(record.pixel, size);
            for (const Pixel& good : record.replacePixel)
                checkPosition(good, size);
        }
        m_oChecked = size;
    }

    void checkPosition(Pixel pixel, cv::Size size) const
    {
        if (!cv::Rect({}, size).contains({pixel.x, pixel.y}))
            VELMO_THROW(m_strOrigin + ": pixel x=" + std::to_string(pixel.x) +
                        " y=" + std::to_string(pixel.y) + " is outside the frames of " + sizeText(size));
    }

    std::string m_strOrigin;
    std::vector<BadPixel> m_vecRecords;
    std::vector<unsigned short> m_vecMeans;
    cv::Size m_oChecked{-1, -1}; ///< no frame is of this size
};

/// Learns on the first frames.
class LearningStage : public Stage
{
public:
    /// @param known  replaces what is known before; may be nothing
    explicit LearningStage(std::unique_ptr<Stage> known) : m_pKnown(std::move(known)) {}

    std::string name() const override { return m_pStage ? m_pStage->name() : "bad pixels auto"; }

    void apply(Frame& frame) override
    {
        if (m_pKnown)
            m_pKnown->apply(frame);
        if (m_oSearch) {
            m_oSearch->add(frame);
            if (m_oSearch->frames() < nFramesToLearn)
                return;
            const PixelFindings findings = m_oSearch->find();
            m_oSearch.reset();
            std::vector<BadPixel> records;
            if (findings.overshot().empty())
                records = replacementsOf(findings.map()).records;
            m_pStage = std::make_unique<BadPixelStage>("bad pixels auto", std::move(records));
        }
        m_pStage->apply(frame);
    }

private:
    static constexpr std::size_t nFramesToLearn = 20;

    std::optional<PixelSearch> m_oSearch{PixelSearch()};
    std::unique_ptr<Stage> m_pKnown;
    std::unique_ptr<Stage> m_pStage;
};

/// The records, with others for all pixels together where the flat field has some more that are defective:
/// what stands in for one must not be another.
std::vector<BadPixel> recordsOf(const Calibration& calibration)
{
    PixelMap map = calibration.flat.defects.clone();
    if (map.empty() || cv::countNonZero(map) == 0)
        return calibration.badPixels;
    for (const BadPixel& record : calibration.badPixels) {
        const cv::Point at(record.pixel.x, record.pixel.y);
        if (!cv::Rect({}, map.size()).contains(at))
            VELMO_THROW(calibration.origin + ": pixel x=" + std::to_string(at.x) + " y=" +
                        std::to_string(at.y) + " is outside the flat field of " + sizeText(map.size()));
        map(at) = 1;
    }
    return replacementsOf(map).records;
}

std::unique_ptr<Stage> makeKnown(const Calibration& calibration)
{
    std::vector<BadPixel> records = recordsOf(calibration);
    if (records.empty())
        return nullptr;
    return std::make_unique<BadPixelStage>(
        calibration.badPixels.empty() ? calibration.flatOrigin : calibration.origin, std::move(records));
}

} // namespace

std::unique_ptr<Stage> makeBadPixelStage(const Settings& settings, const Calibration& calibration)
{
    auto known = makeKnown(calibration);
    if (settings.text("pixels/records") == "auto")
        return std::make_unique<LearningStage>(std::move(known));
    return known;
}

} // namespace velmo::camera

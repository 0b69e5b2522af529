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
    cv::Size m_oChecked;
};

/// Learns on the first frames.
class LearningStage : public Stage
{
public:
    std::string name() const override { return m_pStage ? m_pStage->name() : "bad pixels auto"; }

    void apply(Frame& frame) override
    {
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
    std::unique_ptr<Stage> m_pStage;
};

} // namespace

std::unique_ptr<Stage> makeBadPixelStage(const Settings& settings, const Calibration& calibration)
{
    if (settings.text("pixels/records") == "auto")
        return std::make_unique<LearningStage>();
    if (calibration.badPixels.empty())
        return nullptr;
    return std::make_unique<BadPixelStage>(calibration.origin, calibration.badPixels);
}

} // namespace velmo::camera

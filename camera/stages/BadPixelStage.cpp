#include "camera/stages/BadPixelStage.h"

#include "camera/settings/Parse.h"

#include "core/Exception.h"

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
        int sum = 2; // half of 4: to the nearest
        for (const Pixel& good : record.replacePixel)
            sum += frame(good.y, good.x);
        return static_cast<unsigned short>(sum / 4);
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

} // namespace

std::unique_ptr<Stage> makeBadPixelStage(const Calibration& calibration)
{
    if (calibration.badPixels.empty())
        return nullptr;
    return std::make_unique<BadPixelStage>(calibration.origin, calibration.badPixels);
}

} // namespace velmo::camera

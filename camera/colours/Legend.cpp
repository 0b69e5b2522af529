#include "camera/colours/Legend.h"

#include "camera/colours/LegendBar.h"
#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <utility>
#include <vector>

namespace velmo::camera {
namespace {

constexpr int s32Gap = 8;
constexpr int s32BarWidth = 14;
constexpr int s32TickLength = 3;
constexpr int s32LineHeight = s32TextHeight + 5;
const cv::Vec3b paper(24, 24, 24);
const cv::Scalar ink(230, 230, 230);

/// How far the bar stays away from the upper and the lower edge: its ends stand beside the middle of the
/// first and the last label.
int topOf(int rows)
{
    return std::min(s32TextHeight / 2 + 1, rows / 4);
}

/// What stands beside the picture: its own width, and how it is drawn into the room that is left for it.
class Panel
{
public:
    Panel(LegendBar bar, const std::vector<Isotherm>& isotherms, int rows)
        : m_oBar(std::move(bar)), m_vecIsotherms(isotherms), m_s32Lines(std::max(1, rows / s32LineHeight))
    {
        for (const LegendTick& tick : m_oBar.ticks)
            m_s32LabelWidth = std::max(m_s32LabelWidth, textWidth(tick.text));
        for (const Isotherm& isotherm : isotherms)
            m_s32ColumnWidth =
                std::max(m_s32ColumnWidth, s32Swatch + s32Gap + textWidth(isotherm.label) + s32Gap);
    }

    int width() const
    {
        const int columns = (static_cast<int>(m_vecIsotherms.size()) + m_s32Lines - 1) / m_s32Lines;
        return 2 * s32Gap + s32BarWidth + m_s32LabelWidth + s32Gap + columns * m_s32ColumnWidth;
    }

    void draw(Picture panel, int top) const
    {
        const int barEnd = s32Gap + s32BarWidth, labels = barEnd + s32Gap;
        for (std::size_t row = 0; row < m_oBar.rows.size(); ++row)
            panel(cv::Rect(s32Gap, top + static_cast<int>(row), s32BarWidth, 1)) = m_oBar.rows[row];
        for (const LegendTick& tick : m_oBar.ticks) {
            const int y = top + tick.row;
            cv::line(panel, {barEnd, y}, {barEnd + s32TickLength, y}, ink);
            drawText(panel, tick.text, {labels, y - s32TextHeight / 2}, ink);
        }
        for (int i = 0; i < static_cast<int>(m_vecIsotherms.size()); ++i) {
            const Isotherm& isotherm = m_vecIsotherms[static_cast<std::size_t>(i)];
            const cv::Point corner(labels + m_s32LabelWidth + s32Gap + i / m_s32Lines * m_s32ColumnWidth,
                                   i % m_s32Lines * s32LineHeight + 2);
            cv::rectangle(panel, cv::Rect(corner, cv::Size(s32Swatch, s32Swatch)), isotherm.colour,
                          cv::FILLED);
            drawText(panel, isotherm.label, corner + cv::Point(s32Swatch + s32Gap, 0), ink);
        }
    }

private:
    static constexpr int s32Swatch = s32TextHeight;

    LegendBar m_oBar;
    const std::vector<Isotherm>& m_vecIsotherms;
    int m_s32Lines; ///< of isotherms in a column
    int m_s32LabelWidth = 0;
    int m_s32ColumnWidth = 0;
};

/// The bar and the isotherms for a picture of so many rows.
Picture panelOf(ColourTable& table, ValueRange range, const Thermometer& thermometer, int rows)
{
    const int top = topOf(rows);
    const Panel panel(LegendBar(table, range, thermometer, rows - 2 * top), table.isotherms(), rows);
    Picture drawn(rows, panel.width(), paper);
    panel.draw(drawn, top);
    return drawn;
}

} // namespace

void Legend::draw(const Picture& picture, ColourTable& table, ValueRange range, Picture& whole)
{
    if (!m_oDrawnFor || *m_oDrawnFor != range || m_oPanel.rows != picture.rows) {
        m_oPanel = panelOf(table, range, m_oThermometer, picture.rows);
        m_oDrawnFor = range;
    }
    whole.create(picture.rows, picture.cols + m_oPanel.cols);
    picture.copyTo(whole(cv::Rect(0, 0, picture.cols, picture.rows)));
    m_oPanel.copyTo(whole(cv::Rect(picture.cols, 0, m_oPanel.cols, picture.rows)));
}

} // namespace velmo::camera

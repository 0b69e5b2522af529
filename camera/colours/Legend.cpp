#include "camera/colours/Legend.h"

#include "camera/colours/LegendBar.h"
#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <optional>
#include <string>
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
    Panel(LegendBar bar, const ColourTable& table, int rows)
        : m_oBar(std::move(bar)), m_s32Lines(std::max(1, rows / s32LineHeight))
    {
        for (const LegendTick& tick : m_oBar.ticks)
            m_s32LabelWidth = std::max(m_s32LabelWidth, textWidth(tick.text));
        for (const Isotherm& isotherm : table.isotherms())
            m_vecEntries.push_back({isotherm.colour, isotherm.label});
        if (!table.note().empty())
            m_vecEntries.push_back({std::nullopt, table.note()});
        for (const Entry& entry : m_vecEntries)
            m_s32ColumnWidth = std::max(m_s32ColumnWidth, entry.indent() + textWidth(entry.text) + s32Gap);
    }

    int width() const
    {
        const int columns = (static_cast<int>(m_vecEntries.size()) + m_s32Lines - 1) / m_s32Lines;
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
        for (int i = 0; i < static_cast<int>(m_vecEntries.size()); ++i) {
            const Entry& entry = m_vecEntries[static_cast<std::size_t>(i)];
            const cv::Point corner(labels + m_s32LabelWidth + s32Gap + i / m_s32Lines * m_s32ColumnWidth,
                                   i % m_s32Lines * s32LineHeight + 2);
            if (entry.colour)
                cv::rectangle(panel, cv::Rect(corner, cv::Size(s32Swatch, s32Swatch)), *entry.colour,
                              cv::FILLED);
            drawText(panel, entry.text, corner + cv::Point(entry.indent(), 0), ink);
        }
    }

private:
    static constexpr int s32Swatch = s32TextHeight;

    /// An isotherm, or a note without a colour.
    struct Entry
    {
        std::optional<cv::Vec3b> colour;
        std::string text;

        int indent() const { return colour ? s32Swatch + s32Gap : 0; }
    };

    LegendBar m_oBar;
    std::vector<Entry> m_vecEntries;
    int m_s32Lines; ///< of entries in a column
    int m_s32LabelWidth = 0;
    int m_s32ColumnWidth = 0;
};

/// The bar and the isotherms for a picture of so many rows; as wide as it needs, unless its width is known.
Picture panelOf(ColourTable& table, ValueRange range, const Thermometer& thermometer, int rows, int width)
{
    const int top = topOf(rows);
    const Panel panel(LegendBar(table, range, thermometer, rows - 2 * top), table, rows);
    Picture drawn(rows, width > 0 ? width : panel.width(), paper);
    panel.draw(drawn, top);
    return drawn;
}

} // namespace

void Legend::draw(const Picture& picture, ColourTable& table, ValueRange range, Picture& whole)
{
    table.build(range);
    if (m_oDrawnFor != table.builds() || m_oPanel.rows != picture.rows) {
        // Pictures of a film are of one size: where numbers get longer, they take the margin.
        const int width = m_oPanel.rows == picture.rows ? m_oPanel.cols : 0;
        m_oPanel = panelOf(table, range, m_oThermometer, picture.rows, width);
        m_oDrawnFor = table.builds();
    }
    whole.create(picture.rows, picture.cols + m_oPanel.cols);
    picture.copyTo(whole(cv::Rect(0, 0, picture.cols, picture.rows)));
    m_oPanel.copyTo(whole(cv::Rect(picture.cols, 0, m_oPanel.cols, picture.rows)));
}

} // namespace velmo::camera

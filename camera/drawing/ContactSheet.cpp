#include "camera/drawing/ContactSheet.h"

#include "camera/drawing/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::camera {
namespace {

constexpr int s32Margin = 14;
constexpr int s32TitleRoom = s32TextHeight + 9;
const cv::Vec3b paper(24, 24, 24);
const cv::Scalar ink(230, 230, 230);

} // namespace

void ContactSheet::add(std::string title, Picture picture)
{
    m_vecCells.push_back({std::move(title), std::move(picture)});
}

Picture ContactSheet::draw() const
{
    cv::Size cell(1, 1);
    for (const Cell& each : m_vecCells) {
        cell.width = std::max({cell.width, each.m_oPicture.cols, textWidth(each.m_strTitle)});
        cell.height = std::max(cell.height, each.m_oPicture.rows);
    }
    cell += cv::Size(s32Margin, s32Margin + s32TitleRoom);
    const int rows = (static_cast<int>(m_vecCells.size()) + m_s32Columns - 1) / m_s32Columns;
    const int header = m_strTitle.empty() ? s32Margin / 2 : s32TitleRoom + s32Margin;

    Picture sheet(header + rows * cell.height + s32Margin / 2, m_s32Columns * cell.width + s32Margin, paper);
    drawText(sheet, m_strTitle, {s32Margin, s32Margin}, ink);
    for (std::size_t i = 0; i < m_vecCells.size(); ++i) {
        const Cell& each = m_vecCells[i];
        const int column = static_cast<int>(i) % m_s32Columns;
        const int row = static_cast<int>(i) / m_s32Columns;
        const cv::Point corner(s32Margin + column * cell.width, header + row * cell.height);
        drawText(sheet, each.m_strTitle, {corner.x, corner.y + 4}, ink);
        const cv::Rect place(corner + cv::Point(0, s32TitleRoom), each.m_oPicture.size());
        each.m_oPicture.copyTo(sheet(place));
    }
    return sheet;
}

Picture beside(const Picture& left, const Picture& right)
{
    constexpr int s32Gap = 2;
    Picture pair(std::max(left.rows, right.rows), left.cols + s32Gap + right.cols, paper);
    left.copyTo(pair(cv::Rect(0, 0, left.cols, left.rows)));
    right.copyTo(pair(cv::Rect(left.cols + s32Gap, 0, right.cols, right.rows)));
    return pair;
}

} // namespace velmo::camera

#pragma once

#include "camera/Picture.h"

#include "core/Export.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// One picture that shows many, each under its title.
class VELMO_API ContactSheet
{
public:
    /// @param title    may be empty
    /// @param columns  how many pictures stand in a row
    ContactSheet(std::string title, int columns) : m_strTitle(std::move(title)), m_s32Columns(columns) {}

    void add(std::string title, Picture picture);

    /// Cells of one size, as large as the largest picture.
    Picture draw() const;

private:
    struct Cell
    {
        std::string m_strTitle;
        Picture m_oPicture;
    };
    std::string m_strTitle;
    int m_s32Columns;
    std::vector<Cell> m_vecCells;
};

/// Left and right beside each other, with a narrow gap.
VELMO_API Picture beside(const Picture& left, const Picture& right);

} // namespace velmo::camera

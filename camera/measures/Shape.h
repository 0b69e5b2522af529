#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace velmo::camera {

/// Neighbouring pixels of a row.
struct Run
{
    int row;
    int begin;
    int end; ///< behind the last one
};

/// A part of the frame that is measured.
class VELMO_API Shape
{
public:
    enum class Kind
    {
        Spot,    ///< X,Y or X,Y:R: the pixels with dx² + dy² <= R²; without R the one pixel
        Box,     ///< X,Y,W,H: columns X to X + W - 1, rows Y to Y + H - 1
        Line,    ///< X1,Y1,X2,Y2: both ends, pixels that touch at sides or corners
        Polygon, ///< X1,Y1,X2,Y2,X3,Y3,...: what lies inside, and the lines between the corners
        Whole    ///< the whole frame; the text counts nothing
    };

    /// @param kind  which of them
    /// @param text  as said at Kind; X counts columns and Y rows, from 0 on
    /// @throws Exception  that names text and limit, for anything else
    static Shape parse(Kind kind, const std::string& text);

    Kind kind() const { return m_eKind; }

    /// "spot", "box", "line", "polygon", "whole".
    const char* kindName() const;

    /// Spot: its middle. Box: first and last corner. Line: its ends. Polygon: its corners. Whole: nothing.
    const std::vector<cv::Point>& points() const { return m_vecPoints; }
    double radius() const { return m_dRadius; }

    /// Its pixels in a frame of this size, row by row.
    ///
    /// @param frame  its columns and rows
    /// @param name   of the shape, for the message
    /// @throws Exception  that names the place and the limit, if a part of it lies outside
    std::vector<Run> runs(cv::Size frame, const std::string& name) const;

private:
    Shape(Kind kind, std::vector<cv::Point> points, double radius);

    cv::Rect bounds(cv::Size frame) const;

    Kind m_eKind;
    std::vector<cv::Point> m_vecPoints;
    double m_dRadius = 0;
};

} // namespace velmo::camera

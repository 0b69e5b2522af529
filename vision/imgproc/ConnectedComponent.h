#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/memory/ResetByMove.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace velmo::exp::vision {

/// One blob: the pixel positions that a labelling pass has found to belong together, and what can be
/// measured of them.
///
/// Positions are kept in the order they came in, duplicates included; any 32-bit coordinates are allowed.
/// Nothing is cached: every measure goes over the points again. Several threads may measure a component at
/// once while none changes it. Errors of the containers (out of memory) and of OpenCV pass through.
class VELMO_API ConnectedComponent
{
public:
    /// No points, label 1.
    ConnectedComponent();

    /// No points. A negative label is kept as its 32 bits.
    ConnectedComponent(int label);

    ConnectedComponent(const std::vector<cv::Point>& points, int label);

    virtual ~ConnectedComponent();

    ConnectedComponent(const ConnectedComponent& other);
    ConnectedComponent& operator=(const ConnectedComponent& other);
    /// The other component is left without points; it keeps its label.
    ConnectedComponent(ConnectedComponent&& other) noexcept;
    ConnectedComponent& operator=(ConnectedComponent&& other) noexcept;

    void addPoint(const cv::Point& point);

    /// Appends the points of `other`, in their order; `other` may be this component. The label stays.
    void join(const ConnectedComponent& other);

    void setLabel(unsigned int label);
    unsigned int getLabel() const;

    std::size_t getNrOfPoints() const;

    /// A copy of the points, in the order they were added.
    std::vector<cv::Point> getPoints() const;

    /// Mean x and mean y; (0, 0) without points.
    cv::Point2d getCenterOfGravity() const;

    /// Ratio of the smaller to the larger squared extent along the image axes, each the largest squared
    /// distance from the centre rounded to whole pixels (ties to even): 1 for a blob as wide as it is tall,
    /// smaller for a longer one. A diagonal bar measures close to 1. 0 without points; NaN if every point
    /// lies on the rounded centre.
    ///
    /// Distances and their squares are 32-bit: they wrap from 46,341 pixels on, and a square that wraps to a
    /// negative value does not count.
    double getElongation() const;

    /// The smallest rectangle that covers every pixel: a single point has 1 x 1. (0, 0, 0, 0) without
    /// points. A width or height beyond 32 bits wraps.
    cv::Rect getBoundingBox() const;

    /// cv::convexHull of the points, not clockwise; empty without points.
    std::vector<cv::Point> getConvexHull() const;

    /// Principal components of the points as rows (y, x): mean, eigenvectors and eigenvalues all have the
    /// row coordinate first, and the component with the largest variance comes first. A single point has
    /// only one component.
    /// @throws cv::Exception  without points
    std::shared_ptr<cv::PCA> getPCA() const;

    /// Paints every pixel of the components, each component in a random colour.
    ///
    /// As all three drawing operations it visits the components by ascending key and takes three numbers
    /// from cv::theRNG() for the colour of each, whether anything of it becomes visible or not: the picture
    /// repeats if the generator is seeded again. The canvas is used by one thread at a time.
    ///
    /// @param canvas       any size; rows may be padded
    /// @param components   by label
    /// @param drawCircles  also a circle around every pixel
    /// @param radius       of these circles, in pixels
    /// @param clear        first make the canvas black
    /// @throws Exception   "canvas to small" at the first component that has a pixel outside the canvas;
    ///                     those before it have been drawn
    /// @throws Exception   if circles of a negative radius are asked for; the canvas is untouched then
    static void drawComponents(cv::Mat_<cv::Vec<unsigned char, 3>>& canvas,
                               const std::map<int, ConnectedComponent>& components, bool drawCircles,
                               int radius, bool clear);

    /// Draws the closed outline of the convex hull of every component that has two hull points or more. See
    /// drawComponents; here a component may reach beyond the left and the upper edge, where it is clipped.
    /// @throws Exception  "canvas to small" at the first component that reaches beyond the right or the lower
    ///                    edge, or is longer than 2,147,483,647 pixels
    static void drawComponentHulls(cv::Mat_<cv::Vec<unsigned char, 3>>& canvas,
                                   const std::map<int, ConnectedComponent>& components, bool clear);

    /// Draws the two principal axes of every component, from its centre along the eigenvectors, each half as
    /// long as the component is in that direction. Nothing is drawn of a component that has fewer than two
    /// points or an end point outside the canvas. See drawComponentHulls.
    /// @throws Exception      as drawComponentHulls
    /// @throws cv::Exception  at a component without points
    static void drawPrincipalComponents(cv::Mat_<cv::Vec<unsigned char, 3>>& canvas,
                                        const std::map<int, ConnectedComponent>& components, bool clear);

private:
    std::vector<cv::Point> m_vecPoints;
    unsigned int m_u32Label = 1;
    ResetByMove<std::size_t> m_u64NrOfPoints;
};

} // namespace velmo::exp::vision

// Not installed.
#pragma once

#include "camera/Frame.h"
#include "camera/stages/DenoiseMove.h"

#include <opencv2/core/types.hpp>

#include <array>

namespace velmo::camera {

/// How far the scene went since the last frame, in pixels.
struct SceneShift
{
    float x = 0, y = 0;    ///< 0 unless it is sure
    float cut = 0;         ///< how sure it is that the whole scene is another
    bool isHinted = false; ///< whether it explains more than chance does
};

/// Finds the shift that best explains what a frame differs by from an estimate: at half the size and less, by
/// the slopes of the estimate, by least squares in tiles none of which has more than its say.
class ShiftFinder
{
public:
    /// @param rows  and columns of a frame
    void create(int rows, int columns);

    /// A pair of lines, row 2 * `row` and the next: the estimate, and the residual in any unit.
    void put(int row, const float* const (&estimate)[2], const float* const (&residual)[2]);

    /// Instead of all of them, where `align` is all that is wanted: a frame and its estimate. Their levels
    /// may differ, and so may stripes: what is known of these before the estimate moves is mostly the
    /// scene's.
    void compare(const Frame& frame, const Line& estimate);

    /// As far as slopes alone tell: up to a pixel or two.
    SceneShift find() const;

    /// From where on the estimate is what the frame shows: the estimate is moved to and fro, from an eighth
    /// of the size on, and what it then differs by has to be less all over the picture. Detail that stays
    /// where it is, as a sensor's own pattern does, speaks against it, unless all of it may be noise: then an
    /// eighth of the size tells alone.
    /// @returns 0, 0 unless it is sure
    SceneShift align();

private:
    /// What is compared, at half the size of another one. A pixel around the pictures is theirs, too.
    struct Level
    {
        int rows = 0, columns = 0, stride = 0;
        Line estimate, residual; ///< the residual of the estimate where it is
        Line moved, rest;        ///< the estimate elsewhere, and what the frame differs by from it
        float x = 0, y = 0;      ///< how far it was moved
        float restLevel = 0;     ///< the mean of the rest, inside
        cv::Rect inside;         ///< where the moved estimate is known

        void create(int newRows, int newColumns);
        std::ptrdiff_t at(int row, int column) const { return std::ptrdiff_t{row + 1} * stride + column + 1; }
        float* line(Line& of, int row) const { return of.data() + at(row, 0); }
        const float* line(const Line& of, int row) const { return of.data() + at(row, 0); }
        void closeLine(Line& of, int row) const; ///< its ends; the picture's border goes on above and below
    };
    struct Equations;
    struct Evidence
    {
        double certainty = 0; ///< how far a shift is beyond chance
        double detailed = 0;  ///< share of the tiles that have more to move than noise
    };

    static Equations equationsOf(const Level& level, const Line& estimate, const Line& residual,
                                 float residualLevel, int tile, float scale);
    static float meanOf(const Level& level, const Line& of);
    void halveLevels();
    void move(Level& level, float x, float y);
    void approach(Level& level, int tile, double& x, double& y);
    Evidence evidenceOf(const Level& level, int tile);

    std::array<Level, 3> m_aLevels;
    std::size_t m_nLevels = 0;
    PictureMover m_oMover;
    Line m_vecGains;
};

} // namespace velmo::camera

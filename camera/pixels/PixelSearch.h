#pragma once

#include "camera/Frame.h"
#include "camera/pixels/PixelMap.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace velmo::camera {

/// Why the search takes a pixel for defective; several may hold.
enum PixelFault : int
{
    Dead = 1,        ///< reads the lowest or the highest value of its range in every frame
    Stuck = 2,       ///< never changes while its neighbours do
    Hot = 4,         ///< far above its neighbours, in most frames
    Cold = 8,        ///< far below
    Noisy = 16,      ///< varies in time far more than its neighbours
    Twinkling = 32,  ///< the same, in jumps between two levels
    Weak = 64,       ///< follows the scene by less than half of what its neighbours do
    BadRow = 128,    ///< in a row with many defective pixels, or one that is off as a whole
    BadColumn = 256, ///< in such a column
};

/// The faults as reasons: `flag` is the PixelFault.
VELMO_API const std::vector<PixelReason>& pixelFaults();

/// What the search found, each as large as a frame.
struct VELMO_API PixelFindings
{
    PixelMap faults;            ///< PixelFault flags; 0 is a good pixel
    cv::Mat_<float> deviations; ///< how far out, in local deviations; below 0: below its neighbours
    PixelMap clusters;          ///< how many defective pixels touch each other there, corners included
    std::size_t frames = 0;     ///< searched through

    std::size_t count() const { return static_cast<std::size_t>(cv::countNonZero(faults)); }

    /// Flags of the library's detectors: 64 for dead, stuck, hot and cold, 2 for noisy and twinkling, 32 for
    /// weak, 16 for rows and columns.
    PixelMap map() const;

    /// A line of comma-separated values for each bad pixel under a line of headings: x, y, flags of `map`,
    /// reasons, deviations, cluster.
    std::string list() const;

    /// More than 5 % defective is rarely true: the name of the fault that was found most often then, or else
    /// nothing.
    std::string overshot() const;
};

/// Looks for defective pixels in a recording of anything, in one pass and without a choice to make.
///
/// One frame is enough for dead pixels, rows and columns, and those that stand out by far; from five frames
/// on noise and response are judged too. Things of the scene are told from defects by their edges, which a
/// lens always blurs, and by what stays when the scene moves.
class VELMO_API PixelSearch
{
public:
    /// @param shutter  what the sensor shows of a closed shutter, for frames that were never corrected; it
    ///                 is taken off each frame. Empty: nothing is.
    explicit PixelSearch(const Frame& shutter = {});
    ~PixelSearch();
    PixelSearch(PixelSearch&&) noexcept;
    PixelSearch& operator=(PixelSearch&&) noexcept;

    /// Takes 48 bytes for a pixel, however many frames there are. One that is the last again, as recorders
    /// repeat frames to keep a rate, is left out.
    /// @throws Exception  for a frame of fewer than 5 x 5 pixels, and for one of another size than the
    ///                    shutter or the frames before
    void add(const Frame& frame);

    /// How many there were that differ from the one before.
    std::size_t frames() const;

    /// The mean of the frames so far; less the shutter plus 32768, if there is one.
    Frame mean() const;

    /// What the frames so far tell.
    /// @throws Exception  if there was none
    PixelFindings find() const;

private:
    std::unique_ptr<struct PixelStatistics> m_pStatistics;
};

} // namespace velmo::camera

#pragma once

#include "camera/measures/Filter.h"

#include "core/Exception.h"
#include "core/Export.h"

namespace velmo::camera {

/// What a filter does to a recording of which the truth is known in part. NaN where the recording is too
/// short or too small to tell.
struct TrialFigures
{
    double still = 0;  ///< noise in time of pixels that stand still, in counts
    double halves = 0; ///< difference of the last frames of the recording's halves, filtered apart; counts
    double ahead = 0;  ///< share of the first half's frames that are others if the second half is not there
    double contrast15 = 0; ///< of moving objects of 15 counts: the share that is left
    double contrast30 = 0;
    double contrast300 = 0;
    double trail30 = 0; ///< what an object of 30 counts leaves behind for three frames: a share of it
    double trail300 = 0;
    double patch = 0; ///< of a still patch of 3 counts: the share that is there after 30 frames
};

/// Runs a filter over a recording again and again: the halves apart, and with objects pasted into it.
///
/// Still pixels are those whose deviation in time, before the filter, is no more than 1.6 times the usual
/// one. Noise is the median of their deviations, the level of the whole frame taken out.
///
/// Halves: the root mean square of the difference, over pixels that stand still, in detail finer than 7
/// pixels. What a filter freezes, or takes over from the first frame, differs between the halves; what it
/// averages does not.
///
/// Objects are squares of 8 pixels, added to the frames; what they bring is the difference of the filtered
/// frames with and without them. Those that move go a pixel a frame. A trail is what is left three pixels
/// behind them, or of one that stood and has been gone for three frames, whichever is more.
///
/// @param frames  of one size, which the filter keeps; at most a few hundred, it holds copies of them
/// @param skip    so many do not count for noise, so that the filter has learnt
/// @throws Exception  if the filter gives frames of another size
VELMO_API TrialFigures trialsOf(const FilterMaker& make, const std::vector<Frame>& frames,
                                std::size_t skip = 0);

} // namespace velmo::camera

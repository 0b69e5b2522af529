#pragma once

#include "camera/measures/Fidelity.h"
#include "camera/measures/Filter.h"
#include "camera/measures/Noise.h"
#include "camera/measures/Trials.h"

#include "core/Export.h"

namespace velmo::camera {

/// All that is measured of a filter. Less noise alone is no better picture: one that is frozen, blurred or
/// late has less noise, too, and shows in the other figures.
struct Judgement : NoiseFigures, FidelityFigures, TrialFigures
{};

/// @param frames  a recording of at most a few hundred frames
/// @param skip    so many are left out of what is measured frame by frame, so that the filter has learnt
/// @throws Exception  if the filter changes the size of frames
VELMO_API Judgement judge(const FilterMaker& make, const std::vector<Frame>& frames, std::size_t skip);

} // namespace velmo::camera

#include "vision/imgproc/SpatialNoiseRemover.h"

#include "core/memory/Overlap.h"
#include "vision/kernels/SpatialNoiseRemoverKernel.h"

namespace velmo::exp::vision {

SpatialNoiseRemover::SpatialNoiseRemover(int gain)
{
    setGain(gain);
}

SpatialNoiseRemover::~SpatialNoiseRemover() = default;

bool SpatialNoiseRemover::setGain(int gain)
{
    if (gain < 0 || gain > s32MaxGain)
        return false;
    m_s32Gain = gain;
    return true;
}

void SpatialNoiseRemover::process(const cv::Mat_<short>& in, cv::Mat_<short>& out) const
{
    out.create(in.rows, in.cols);
    if (in.rows < 1 || in.cols < 1)
        return;
    const cv::Mat_<short> frame = untouched(in, out);
    if (m_s32Gain == 0)
        frame.copyTo(out);
    else
        removeSpatialNoise(frame, out, m_s32Gain);
}

} // namespace velmo::exp::vision

#include "vision/imgproc/StaticPatternRemover.h"

#include "core/Exception.h"
#include "core/memory/Overlap.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"

#include <string>
#include <utility>

namespace velmo::exp::vision {
namespace {

bool assign(int& parameter, int value, int most)
{
    if (value < 0 || value > most)
        return false;
    parameter = value;
    return true;
}

} // namespace

StaticPatternRemover::StaticPatternRemover(int threshold, int lineLimit, int frameLimit)
{
    setThreshold(threshold);
    setLineLimit(lineLimit);
    setFrameLimit(frameLimit);
}

StaticPatternRemover::~StaticPatternRemover() = default;
StaticPatternRemover::StaticPatternRemover(const StaticPatternRemover& other) = default;
StaticPatternRemover& StaticPatternRemover::operator=(const StaticPatternRemover& other) = default;
StaticPatternRemover::StaticPatternRemover(StaticPatternRemover&& other) noexcept = default;
StaticPatternRemover& StaticPatternRemover::operator=(StaticPatternRemover&& other) noexcept = default;

bool StaticPatternRemover::setThreshold(int threshold)
{
    if (!assign(m_s32Threshold, threshold, s32MaxThreshold))
        return false;
    m_s32ThresholdLow = static_cast<int>(static_cast<float>(threshold) * 0.7f);
    return true;
}

bool StaticPatternRemover::setLineLimit(int lineLimit)
{
    return assign(m_s32LineLimit, lineLimit, s32MaxLimit);
}

bool StaticPatternRemover::setFrameLimit(int frameLimit)
{
    return assign(m_s32FrameLimit, frameLimit, s32MaxLimit);
}

void StaticPatternRemover::init(const cv::Size_<int>& size)
{
    if (size.width < 0 || size.height < 0)
        VELMO_THROW("Frame size " + std::to_string(size.width) + " x " + std::to_string(size.height) +
                    " is below 0!");
    // Both or neither: they must always be of the same width.
    DeepMat<int> columns(cv::Mat_<int>(1, size.width, 0));
    m_oPixelState = cv::Mat_<int>(size.height, size.width, 0);
    m_oColumnState = std::move(columns);
}

void StaticPatternRemover::validateInput(const cv::Size_<int>& size)
{
    if (size != m_oPixelState.size())
        init(size);
}

void StaticPatternRemover::process(const cv::Mat_<short>& in, cv::Mat_<short>& out)
{
    validateInput(in.size());
    out.create(in.rows, in.cols);
    if (in.rows < 1 || in.cols < 1)
        return;
    removeStaticPattern(
        untouched(in, out), out, m_oColumnState, m_oPixelState,
        {m_s32Threshold, m_s32ThresholdLow, m_s32LineLimit, m_s32FrameLimit, m_s32MinStart, m_s32MaxStart},
        m_vecScratch);
}

} // namespace velmo::exp::vision

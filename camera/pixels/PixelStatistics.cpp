#include "camera/pixels/PixelStatistics.h"

#include "camera/settings/Parse.h"

#include "core/Clones.h"
#include "core/Exception.h"

#include <algorithm>
#include <string>

namespace velmo::camera {
namespace {

/// The weight of a new frame goes no lower: after so many frames older ones fade.
constexpr std::size_t longestMemory = 65536;

/// Halves the range where there is no shutter: what is left fits 16 bits with a sign.
constexpr unsigned short middle = 32768;

/// Takes the values of a line less the shutter, and counts those that changed. Returns the highest one.
VELMO_CLONES int takeLine(const unsigned short* __restrict frame, const unsigned short* __restrict shutter,
                          int count, short* __restrict values, unsigned short* __restrict changes)
{
    int highest = 0;
    for (int i = 0; i < count; ++i) {
        const int whole = frame[i] - shutter[i];
        const int low = whole < -32768 ? -32768 : whole;
        const auto value = static_cast<short>(low > 32767 ? 32767 : low);
        const auto more = static_cast<unsigned short>(value != values[i] && changes[i] != 65535);
        changes[i] = static_cast<unsigned short>(changes[i] + more);
        values[i] = value;
        highest = highest < frame[i] ? frame[i] : highest;
    }
    return highest;
}

VELMO_CLONES void riseOf(const unsigned short* __restrict frame, const unsigned short* __restrict first,
                         int count, float* __restrict rise)
{
    for (int i = 0; i < count; ++i)
        rise[i] = static_cast<float>(frame[i] - first[i]);
}

void requireSize(const Frame& frame, cv::Size size, const char* among)
{
    if (frame.size() != size)
        VELMO_THROW("a frame of " + sizeText(frame.size()) + among + sizeText(size));
}

} // namespace

void PixelStatistics::begin(const Frame& frame)
{
    if (frame.rows < 5 || frame.cols < 5)
        VELMO_THROW("a frame of " + sizeText(frame.size()) + ": the search needs at least 5x5 pixels");
    if (m_oShutter.empty())
        m_oShutter = Frame(1, frame.cols, middle);
    else
        requireSize(frame, m_oShutter.size(), " with a shutter of ");
    m_oFirst = frame.clone();
    m_oChanges = Frame(frame.size(), 0);
    for (cv::Mat_<float>* figure : {&m_oLevel, &m_oOdd, &m_oMovement, &m_oFollow, &m_oRestless, &m_oPeak,
                                    &m_oVariance, &m_oSkew, &m_oKurtosis, &m_oPersistent})
        *figure = cv::Mat_<float>(frame.size(), 0.0F);
    m_oValues = cv::Mat_<short>(frame.size(), static_cast<short>(0));
    m_vecScratch.resize(7 * static_cast<std::size_t>(frame.cols));
    m_vecRise.resize(static_cast<std::size_t>(frame.cols));
    m_vecPeaks.resize(m_vecRise.size());
}

void PixelStatistics::takeValues(const Frame& frame)
{
    for (int y = 0; y < frame.rows; ++y)
        m_s32Highest = std::max(m_s32Highest,
                                takeLine(frame[y], shutterLine(y), frame.cols, m_oValues[y], m_oChanges[y]));
    if (m_nFrames == 0)
        m_oChanges.setTo(0);
}

void PixelStatistics::add(const Frame& frame)
{
    if (m_nFrames == 0)
        begin(frame);
    requireSize(frame, m_oFirst.size(), " among frames of ");
    if (!m_oLast.renew(frame))
        return;
    takeValues(frame);
    ++m_nFrames;
    short* const median = m_vecScratch.data();
    const int last = frame.rows - 1;
    NewLine line{m_vecRise.data(),
                 nullptr,
                 m_vecPeaks.data(),
                 {median, median + frame.cols},
                 1 / static_cast<float>(std::min(m_nFrames, longestMemory))};
    for (int y = 0; y <= last; ++y) {
        const short* lines[5];
        for (int k = 0; k < 5; ++k)
            lines[k] = m_oValues[std::clamp(y - 2, 0, last - 4) + k];
        lookAround(lines, frame.cols, median + 2 * frame.cols, line.around);
        // Beyond the edges stands the neighbour inside.
        standOut(m_oValues[y == 0 ? 1 : y - 1], m_oValues[y], m_oValues[y == last ? last - 1 : y + 1],
                 frame.cols, m_vecPeaks.data());
        riseOf(frame[y], m_oFirst[y], frame.cols, m_vecRise.data());
        line.values = m_oValues[y];
        addMoments(line, frame.cols,
                   {m_oLevel[y], m_oOdd[y], m_oMovement[y], m_oFollow[y], m_oRestless[y], m_oPeak[y],
                    m_oVariance[y], m_oSkew[y], m_oKurtosis[y], m_oPersistent[y]});
    }
}

cv::Mat_<float> PixelStatistics::mean() const
{
    cv::Mat_<float> mean(m_oFirst.size());
    for (int y = 0; y < mean.rows; ++y)
        for (int x = 0; x < mean.cols; ++x)
            mean(y, x) = static_cast<float>(m_oFirst(y, x) - shutterLine(y)[x]) + m_oLevel(y, x);
    return mean;
}

} // namespace velmo::camera

#include "camera/measures/Noise.h"

#include "camera/measures/Statistics.h"

#include "core/Exception.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace velmo::camera {
namespace {

using Values = cv::Mat_<double>;

constexpr int s32Smooth = 9;             ///< pixels over which stripes are averaged away
constexpr int s32Border = s32Smooth / 2; ///< where the average would run over the edge
constexpr double dMeanGain = 0.08;       ///< of the running mean, once it has seen 12 frames

/// The median of every column, as one row.
Values columnMedians(const Values& frame)
{
    Values medians(1, frame.cols);
    for (int c = 0; c < frame.cols; ++c)
        medians(0, c) = medianOf(frame.col(c));
    return medians;
}

Values rowMedians(const Values& frame)
{
    return columnMedians(frame.t());
}

/// What is left of a frame, or of a line of medians, without a moving average along its lines.
Values withoutSmooth(const Values& values)
{
    Values smooth;
    cv::blur(values, smooth, {s32Smooth, 1});
    return values - smooth;
}

/// Column stripes: the columns' medians of what an average along the rows leaves, so that neither shading
/// nor a wide object counts.
double stripes(const Values& mean)
{
    if (mean.cols <= 2 * s32Border)
        return std::numeric_limits<double>::quiet_NaN();
    const Values rest = withoutSmooth(mean);
    return robustDeviation(columnMedians(rest.colRange(s32Border, rest.cols - s32Border)));
}

/// The mean product of the column stripes of the upper half and of those of the lower half.
double stripesInCommon(const Values& frame)
{
    const int half = frame.rows / 2;
    if (frame.cols <= 2 * s32Border || half == 0)
        return std::numeric_limits<double>::quiet_NaN();
    const Values rest = withoutSmooth(frame);
    const Values upper = withoutSmooth(columnMedians(rest.rowRange(0, half))),
                 lower = withoutSmooth(columnMedians(rest.rowRange(half, rest.rows)));
    const Values products = upper.mul(lower);
    return cv::mean(products.colRange(s32Border, frame.cols - s32Border))[0];
}

/// The root of a size, with its sign.
double signedRoot(double value)
{
    return std::copysign(std::sqrt(std::abs(value)), value);
}

/// Halves to even; conversions of matrices round them as the machine likes.
Values rounded(const Values& values)
{
    Values whole(values.size());
    std::transform(values.begin(), values.end(), whole.begin(),
                   [](double value) { return std::nearbyint(value); });
    return whole;
}

double unchangedShare(const cv::Mat_<unsigned char>& changed)
{
    return 1 - cv::countNonZero(changed) / static_cast<double>(std::max<std::size_t>(1, changed.total()));
}

/// The mean frame without its stripes and without everything wider than three pixels.
double pixelPattern(const Values& mean)
{
    cv::Mat_<float> single;
    mean.convertTo(single, CV_32F);
    cv::Mat_<float> smooth;
    cv::medianBlur(single, smooth, 3);
    Values rest;
    cv::Mat(single - smooth).convertTo(rest, CV_64F);
    const Values columns = columnMedians(rest);
    const Values rows = rowMedians(rest);
    for (int r = 0; r < rest.rows; ++r)
        for (int c = 0; c < rest.cols; ++c)
            rest(r, c) -= columns(0, c) + rows(0, r);
    return robustDeviation(rest);
}

/// The rise of a straight line through the values, first to last.
double riseOf(const std::vector<double>& values)
{
    const double middle = (static_cast<double>(values.size()) - 1) / 2;
    double weighted = 0;
    double weights = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double from = static_cast<double>(i) - middle;
        weighted += from * values[i];
        weights += from * from;
    }
    return weighted / weights * 2 * middle;
}

} // namespace

void NoiseMeter::add(const Frame& frame)
{
    if (m_nFrames > 0 && frame.size() != m_oSum.size())
        VELMO_THROW("the frames differ in size, they are no recording of one camera");
    if (frame.total() > std::size_t{s32MaxPixels})
        VELMO_THROW("noise is measured in frames of at most " + std::to_string(s32MaxPixels) + " pixels");
    double low = 0;
    double high = 0;
    cv::minMaxLoc(frame, &low, &high);
    m_dLow = m_nFrames == 0 ? low : std::min(m_dLow, low);
    m_dHigh = m_nFrames == 0 ? high : std::max(m_dHigh, high);

    Values values;
    frame.convertTo(values, CV_64F);
    m_vecLevels.push_back(medianOf(values));
    if (m_nFrames == 0) {
        m_oSum = values.clone();
        m_oFirst = values;
        m_oChanged = cv::Mat_<unsigned char>::zeros(values.size());
        m_oMeanChanged = m_oChanged.clone();
        m_oMean = values.clone();
    } else {
        m_oSum += values;
        compare(values);
    }
    const Values change = values - m_oFirst;
    m_oSteady.add(change - medianOf(change));
    m_oChanged |= change != 0;
    const double gain = std::max(dMeanGain, 1 / static_cast<double>(m_nFrames + 1));
    // Number by number: sums of matrices, too, are rounded as the machine likes.
    std::transform(values.begin(), values.end(), m_oMean.begin(), m_oMean.begin(),
                   [gain](double value, double mean) { return mean + (value - mean) * gain; });
    m_oMeanChanged |= rounded(m_oMean) != m_oFirst;
    m_dCommonColumns += stripesInCommon(values);
    m_dCommonRows += stripesInCommon(values.t());
    m_oPrevious = values;
    ++m_nFrames;
}

void NoiseMeter::compare(const Values& frame)
{
    Values change = frame - m_oPrevious;
    change -= medianOf(change);
    m_oPixels.add(change);
    Values mean;
    cv::reduce(change, mean, 0, cv::REDUCE_AVG);
    m_oColumns.add(mean - cv::mean(mean));
    cv::reduce(change, mean, 1, cv::REDUCE_AVG);
    m_oRows.add(mean - cv::mean(mean));
}

NoiseFigures NoiseMeter::figures() const
{
    NoiseFigures figures;
    if (m_nFrames == 0)
        return figures;
    const std::size_t differences = m_nFrames - 1;
    const Values mean = m_oSum / static_cast<double>(m_nFrames);
    figures.frames = m_nFrames;
    figures.size = m_oSum.size();
    figures.low = m_dLow;
    figures.high = m_dHigh;
    // A difference has the noise of two.
    figures.temporal = m_oPixels.median() / std::sqrt(2.0);
    figures.columnsInTime = m_oColumns.median() / std::sqrt(2.0);
    figures.rowsInTime = m_oRows.median() / std::sqrt(2.0);
    figures.slow = m_oSteady.median();
    figures.unchanged = unchangedShare(m_oChanged);
    figures.unchangedMean = unchangedShare(m_oMeanChanged);
    figures.commonColumns = signedRoot(m_dCommonColumns / static_cast<double>(m_nFrames));
    figures.commonRows = signedRoot(m_dCommonRows / static_cast<double>(m_nFrames));
    figures.columns = stripes(mean);
    figures.rows = stripes(mean.t());
    figures.pattern = pixelPattern(mean);
    figures.drift = differences > 0 ? riseOf(m_vecLevels) : std::numeric_limits<double>::quiet_NaN();
    return figures;
}

} // namespace velmo::camera

#include "camera/pixels/FlatField.h"

#include "camera/pixels/Robust.h"
#include "camera/settings/Parse.h"

#include "vision/imgproc/BadPixel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace velmo::camera {
namespace {

using exp::vision::BadPixelTools;

constexpr float fLeastGain = 0.1F;
constexpr float fMostGain = 10;
constexpr float fMostValue = 65535;

std::vector<float> ofGoodPixels(const cv::Mat_<float>& plane, const PixelMap& defects)
{
    std::vector<float> values;
    for (int y = 0; y < plane.rows; ++y)
        for (int x = 0; x < plane.cols; ++x)
            if (defects(y, x) == 0)
                values.push_back(plane(y, x));
    if (values.empty())
        VELMO_THROW("a flat field without a good pixel");
    return values;
}

/// Whether all values lie between these; one that is not a number lies nowhere.
bool allWithin(const cv::Mat_<float>& plane, float low, float high)
{
    return std::all_of(plane.begin(), plane.end(),
                       [&](float value) { return value >= low && value <= high; });
}

} // namespace

float FlatField::level() const
{
    std::vector<float> values = ofGoodPixels(shutter, defects);
    return medianOf(values);
}

std::vector<cv::Mat_<float>> FlatField::planes() const
{
    cv::Mat_<float> flags;
    defects.convertTo(flags, CV_32F);
    return {shutter, gains, flags};
}

FlatField FlatField::fromPlanes(const std::vector<cv::Mat_<float>>& planes, const std::string& what)
{
    if (planes.size() != 3 || planes[0].empty() || planes[1].size() != planes[0].size() ||
        planes[2].size() != planes[0].size())
        VELMO_THROW(what + ": not a flat field: it needs three planes of one size");
    if (!allWithin(planes[0], 0, fMostValue))
        VELMO_THROW(what + ": not a flat field: the first plane has a value that is not from 0 to 65535");
    if (!allWithin(planes[1], fLeastGain, fMostGain))
        VELMO_THROW(what + ": not a flat field: the second plane has a gain that is not from 0.1 to 10");
    if (!allWithin(planes[2], 0, fMostValue))
        VELMO_THROW(what + ": not a flat field: the third plane has flags that are not from 0 to 65535");
    FlatField field = {planes[0].clone(), planes[1].clone(), {}};
    planes[2].convertTo(field.defects, CV_32S);
    if (cv::countNonZero(field.defects == 0) == 0)
        VELMO_THROW(what + ": a flat field without a good pixel");
    return field;
}

void FlatLearner::Recording::add(const Frame& frame, const Recording& beside)
{
    if (beside.m_nFrames > 0 && frame.size() != beside.m_oSum.size())
        VELMO_THROW("frames of " + sizeText(frame.size()) + " at one temperature, of " +
                    sizeText(beside.m_oSum.size()) + " at the other");
    if (m_nFrames == 0)
        m_oSearch.emplace(frame.clone()); // what differs from the first frame is no offset
    m_oSearch->add(frame);
    if (m_nFrames == 0)
        m_oSum = cv::Mat_<double>::zeros(frame.size());
    cv::accumulate(frame, m_oSum);
    ++m_nFrames;
}

cv::Mat_<float> FlatLearner::Recording::mean() const
{
    cv::Mat_<float> mean;
    m_oSum.convertTo(mean, CV_32F, 1 / static_cast<double>(m_nFrames));
    return mean;
}

void FlatLearner::add(const Frame& frame)
{
    m_oShutter.add(frame, m_oOther);
}

void FlatLearner::addOther(const Frame& frame)
{
    m_oOther.add(frame, m_oShutter);
}

FlatField FlatLearner::learn() const
{
    if (m_oShutter.m_nFrames == 0)
        VELMO_THROW("a flat field without a frame of the shutter");
    FlatField field;
    field.shutter = m_oShutter.mean();
    field.gains = cv::Mat_<float>(field.shutter.size(), 1.0F);
    field.defects = m_oShutter.m_oSearch->find().map();
    if (m_oOther.m_nFrames > 0)
        learnGains(field);
    ofGoodPixels(field.shutter, field.defects); // there must be one
    return field;
}

void FlatLearner::learnGains(FlatField& field) const
{
    constexpr float fFarther = 2;  // than the usual response, or the inverse
    constexpr float fAlike = 0.25; // real sensors scatter by some percent
    field.defects |= m_oOther.m_oSearch->find().map();
    const cv::Mat_<float> responses = m_oOther.mean() - field.shutter;
    std::vector<float> good = ofGoodPixels(responses, field.defects);
    const Spread usual = spreadOf(good);
    if (1.4826F * usual.deviation >= fAlike * std::abs(usual.middle))
        VELMO_THROW("no gains can be learnt: between both temperatures pixels differ by " +
                    numberText(usual.middle, 1) + " counts and scatter by " +
                    numberText(1.4826 * usual.deviation, 1));
    for (int y = 0; y < responses.rows; ++y)
        for (int x = 0; x < responses.cols; ++x) {
            const float share = responses(y, x) / usual.middle;
            if (share > 1 / fFarther && share < fFarther)
                field.gains(y, x) = 1 / share;
            else
                field.defects(y, x) |= static_cast<int>(BadPixelTools::u32BadCurve);
        }
}

} // namespace velmo::camera

#include "camera/measures/Trials.h"

#include "camera/measures/Deviation.h"
#include "camera/measures/Statistics.h"

#include "core/Exception.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmo::camera {
namespace {

using Values = cv::Mat_<double>;
using Frames = std::vector<Frame>;

constexpr int s32Side = 8;           ///< of what is pasted
constexpr int s32Late = 3;           ///< frames after which no trail should be left
constexpr std::size_t nLeast = 8;    ///< frames, to have time for a trail
constexpr std::size_t nSettled = 30; ///< frames, after which a small patch should be there
constexpr double dStill = 1.6;       ///< of the usual deviation: more of it is movement
constexpr int s32Detail = 7;         ///< pixels: what is wider is no detail

Values difference(const Frame& left, const Frame& right)
{
    Values values;
    cv::subtract(left, right, values, cv::noArray(), CV_64F);
    return values;
}

/// Of each pixel in time, without what the level of the whole frame does. That is found against the first
/// frame, and then against the mean of all: what moves is in few pixels of that.
Values deviations(const Frames& frames, std::size_t from)
{
    Values mean;
    frames[from].convertTo(mean, CV_64F);
    for (const bool last : {false, true}) {
        Deviation deviation;
        Values sum = Values::zeros(mean.size());
        for (std::size_t i = from; i < frames.size(); ++i) {
            Values values;
            frames[i].convertTo(values, CV_64F);
            values -= medianOf(values - mean);
            deviation.add(values - mean);
            sum += values;
        }
        if (last)
            return deviation.values();
        mean = sum / static_cast<double>(frames.size() - from);
    }
    return {};
}

/// Pixels that vary in time as most do.
cv::Mat stillPixels(const Values& deviations)
{
    return deviations <= dStill * medianOf(deviations);
}

double medianWithin(const Values& values, const cv::Mat_<unsigned char>& mask)
{
    std::vector<double> inside;
    for (int r = 0; r < values.rows; ++r)
        for (int c = 0; c < values.cols; ++c)
            if (mask(r, c) != 0)
                inside.push_back(values(r, c));
    return medianOf(cv::Mat_<double>(inside));
}

/// Of still pixels; those that move do not count in what is around them either.
double detailBetween(const Frame& left, const Frame& right, const cv::Mat& still)
{
    Values share, all = difference(left, right), wide, known;
    still.convertTo(share, CV_64F, 1.0 / 255);
    all = all.mul(share);
    cv::blur(all, wide, {s32Detail, s32Detail});
    cv::blur(share, known, {s32Detail, s32Detail});
    const Values fine = all - wide / known;
    return std::sqrt(cv::mean(fine.mul(fine), still)[0]);
}

/// What is added to the frames of a recording.
class Pasted
{
public:
    Pasted(const Frames& frames, double height) : m_oFrames(frames), m_dHeight(height) {}

    const Frames& frames() const { return m_oFrames; }

    void add(std::size_t time, const cv::Rect& object)
    {
        Frame frame = m_oFrames[time].clone();
        frame(object) += m_dHeight;
        m_oFrames[time] = frame;
        m_vecObjects.push_back({time, object});
    }

    /// How much of the height there is in a part of a filtered frame.
    double shareIn(const cv::Rect& part, const Frame& with, const Frame& without) const
    {
        return cv::mean(difference(with(part), without(part)))[0] / m_dHeight;
    }

    struct Object
    {
        std::size_t m_nTime;
        cv::Rect m_oPlace;
    };
    const std::vector<Object>& objects() const { return m_vecObjects; }

private:
    Frames m_oFrames;
    double m_dHeight;
    std::vector<Object> m_vecObjects;
};

struct Mean
{
    double sum = 0;
    int count = 0;

    void add(double value)
    {
        sum += value;
        ++count;
    }
    double value() const { return count > 0 ? sum / count : std::numeric_limits<double>::quiet_NaN(); }
};

class Trials
{
public:
    Trials(const FilterMaker& make, const Frames& frames, std::size_t skip)
        : m_oMake(make), m_oFrames(frames), m_oResults(filtered(make, frames)),
          m_oSize(frames.front().size()), m_nSkip(std::min(skip, frames.size() - 2)),
          m_oStill(stillPixels(deviations(frames, m_nSkip))),
          m_nFrom(std::min<std::size_t>(20, frames.size() / 3))
    {
        if (m_oResults.back().size() != m_oSize)
            VELMO_THROW(
                "filters that change the size of frames cannot be compared with what is known of them");
    }

    double still() const { return medianWithin(deviations(m_oResults, m_nSkip), m_oStill); }

    void compareHalves(TrialFigures& figures) const
    {
        const auto middle = static_cast<std::ptrdiff_t>(m_oFrames.size() / 2);
        const Frames first(m_oFrames.begin(), m_oFrames.begin() + middle),
            second(m_oFrames.begin() + middle, m_oFrames.end());
        const Frames one = filtered(m_oMake, first), two = filtered(m_oMake, second);
        figures.halves = detailBetween(one.back(), two.back(), m_oStill);
        Mean ahead;
        for (std::size_t i = 0; i < one.size(); ++i)
            ahead.add(cv::norm(one[i], m_oResults[i], cv::NORM_INF) == 0 ? 0 : 1);
        figures.ahead = ahead.value();
    }

    void move(double height, double& contrast, double& trail) const
    {
        Pasted pasted(m_oFrames, height);
        for (std::size_t time = m_nFrom; time < m_oFrames.size(); ++time)
            for (const cv::Rect& start : starts()) {
                const int x = (start.x + static_cast<int>(time - m_nFrom)) % (m_oSize.width - s32Side);
                pasted.add(time, {{x, start.y}, start.size()});
            }
        const Frames results = filtered(m_oMake, pasted.frames());
        Mean present, left;
        for (const auto& [time, place] : pasted.objects()) {
            if (time < m_nFrom + s32Late + 1)
                continue;
            present.add(pasted.shareIn(place, results[time], m_oResults[time]));
            if (place.x >= s32Late)
                left.add(pasted.shareIn({place.x - s32Late, place.y, 1, s32Side}, results[time],
                                        m_oResults[time]));
        }
        contrast = present.value();
        trail = left.value();
    }

    double vanish(double height) const
    {
        const std::size_t until = std::min(m_oFrames.size() - s32Late - 1, m_nFrom + 15),
                          late = until + s32Late - 1;
        Pasted pasted(m_oFrames, height);
        for (std::size_t time = m_nFrom; time < until; ++time)
            for (const cv::Rect& place : starts())
                pasted.add(time, place);
        const Frames results = filtered(m_oMake, pasted.frames());
        Mean left;
        for (const cv::Rect& place : starts())
            left.add(pasted.shareIn(place, results[late], m_oResults[late]));
        return left.value();
    }

    /// From 30 frames before the last ten on; the middle of the patches counts.
    double appear(double height) const
    {
        const std::size_t count = m_oFrames.size(),
                          from = count > nSettled + 1 ? std::min<std::size_t>(20, count - nSettled - 1) : 1;
        Pasted pasted(m_oFrames, height);
        for (std::size_t time = from; time < count; ++time)
            for (const cv::Rect& place : scattered())
                pasted.add(time, place);
        const Frames results = filtered(m_oMake, pasted.frames());
        Mean present;
        for (const auto& [time, place] : pasted.objects())
            if (time >= std::min(count - 1, from + nSettled) && time < from + nSettled + 10)
                present.add(
                    pasted.shareIn({place.x + s32Side / 4, place.y + s32Side / 4, s32Side / 2, s32Side / 2},
                                   results[time], m_oResults[time]));
        return present.value();
    }

private:
    std::vector<cv::Rect> starts() const
    {
        std::vector<cv::Rect> places;
        places.reserve(4);
        for (int k = 0; k < 4; ++k)
            places.push_back({k % 2 * m_oSize.width / 2 + s32Side,
                              std::min(m_oSize.height / 8 + k * m_oSize.height / 4, m_oSize.height - s32Side),
                              s32Side, s32Side});
        return places;
    }

    /// Six places that share no line, column or stripe.
    std::vector<cv::Rect> scattered() const
    {
        const int count = std::clamp(m_oSize.width / (s32Side + 6), 1, 6);
        std::vector<cv::Rect> places;
        places.reserve(static_cast<std::size_t>(count));
        for (int k = 0; k < count; ++k)
            places.push_back({s32Side / 2 + k * (m_oSize.width - 2 * s32Side) / count,
                              s32Side / 2 + (5 * k + 2) % count * (m_oSize.height - 2 * s32Side) / count,
                              s32Side, s32Side});
        return places;
    }

    const FilterMaker& m_oMake;
    const Frames& m_oFrames;
    Frames m_oResults;
    cv::Size m_oSize;
    std::size_t m_nSkip;
    cv::Mat m_oStill;
    std::size_t m_nFrom; ///< when objects come into the picture
};

} // namespace

TrialFigures trialsOf(const FilterMaker& make, const Frames& frames, std::size_t skip)
{
    constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
    TrialFigures figures = {dNone, dNone, dNone, dNone, dNone, dNone, dNone, dNone, dNone};
    if (frames.size() < nLeast || frames.front().cols < 4 * s32Side || frames.front().rows < 4 * s32Side)
        return figures;
    const Trials trials(make, frames, skip);
    figures.still = trials.still();
    trials.compareHalves(figures);
    double unused = 0;
    trials.move(15, figures.contrast15, unused);
    trials.move(30, figures.contrast30, figures.trail30);
    trials.move(300, figures.contrast300, figures.trail300);
    figures.trail30 = std::max(figures.trail30, trials.vanish(30));
    figures.trail300 = std::max(figures.trail300, trials.vanish(300));
    figures.patch = trials.appear(3);
    return figures;
}

} // namespace velmo::camera

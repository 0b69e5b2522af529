#include "camera/measures/ShapeMeter.h"

#include "core/Exception.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velmo::camera {
namespace {

constexpr double dNone = std::numeric_limits<double>::quiet_NaN();

double percentile(const ValueCounts& counts, const Thermometer& thermometer, double percent)
{
    const double rank = percent / 100 * static_cast<double>(counts.total() - 1);
    const auto lower = static_cast<std::size_t>(rank);
    const double share = rank - static_cast<double>(lower);
    const double left = thermometer.read(counts.atRank(lower));
    if (share == 0)
        return left;
    const double right = thermometer.read(counts.atRank(lower + 1));
    // What is halfway from no temperature to one is none.
    return left == right || std::isinf(left) ? left : left + share * (right - left);
}

/// The sum over all pixels that have a temperature.
template <class Term>
double sumOf(const ValueCounts& counts, const Thermometer& thermometer, const Term& term)
{
    double sum = 0;
    for (int value = counts.low(); value <= counts.high(); ++value)
        if (const std::uint64_t count = counts.of(value)) {
            const double number = thermometer.read(static_cast<unsigned short>(value));
            if (std::isfinite(number))
                sum += static_cast<double>(count) * term(number);
        }
    return sum;
}

void summarise(Figures& figures, const ValueCounts& counts, const Thermometer& thermometer)
{
    figures.pixels = counts.total();
    figures.low = thermometer.read(static_cast<unsigned short>(counts.low()));
    figures.high = thermometer.read(static_cast<unsigned short>(counts.high()));
    figures.p5 = percentile(counts, thermometer, 5);
    figures.p50 = percentile(counts, thermometer, 50);
    figures.p95 = percentile(counts, thermometer, 95);

    const double with = sumOf(counts, thermometer, [](double) { return 1.0; });
    figures.without = counts.total() - static_cast<std::size_t>(with);
    figures.mean = figures.low;
    figures.deviation = dNone;
    if (with == 0)
        return;
    figures.mean = sumOf(counts, thermometer, [](double number) { return number; }) / with;
    const double squares = sumOf(counts, thermometer, [&](double number) {
        return (number - figures.mean) * (number - figures.mean);
    });
    figures.deviation = std::sqrt(squares / with);
}

void findEnds(Figures& figures, const Frame& frame, const std::vector<Run>& runs)
{
    figures.lowAt = figures.highAt = {runs.front().begin, runs.front().row};
    for (const Run& run : runs)
        for (int column = run.begin; column < run.end; ++column) {
            const unsigned short value = frame[run.row][column];
            if (value < frame(figures.lowAt))
                figures.lowAt = {column, run.row};
            if (value > frame(figures.highAt))
                figures.highAt = {column, run.row};
        }
}

} // namespace

std::vector<HistogramBin> histogramOf(const ValueCounts& counts, const Thermometer& thermometer, int bins)
{
    const auto read = [&](int value) { return thermometer.read(static_cast<unsigned short>(value)); };
    const auto counted = [&](int value) { return counts.of(value) > 0 && std::isfinite(read(value)); };
    int first = counts.low(), last = counts.high();
    while (first <= last && !counted(first))
        ++first;
    while (first <= last && !counted(last))
        --last;
    if (first > last)
        return {};
    const double low = read(first), high = read(last);
    const int steps = low < high ? bins : 1;
    const auto edge = [&](int step) { return step == steps ? high : low + (high - low) * step / steps; };
    std::vector<HistogramBin> histogram;
    histogram.reserve(static_cast<std::size_t>(steps));
    for (int step = 0; step < steps; ++step)
        histogram.push_back({edge(step), edge(step + 1), 0});
    auto bin = histogram.begin();
    for (int value = first; value <= last; ++value) {
        while (bin + 1 != histogram.end() && read(value) >= bin->to)
            ++bin;
        bin->pixels += counts.of(value);
    }
    return histogram;
}

void ShapeMeter::add(Shape shape)
{
    Entry entry = {shape.kindName(), std::move(shape), {}, {}};
    const auto same = std::count_if(m_vecEntries.begin(), m_vecEntries.end(), [&](const Entry& other) {
        return other.shape.kind() == entry.shape.kind();
    });
    if (entry.shape.kind() != Shape::Kind::Whole)
        entry.name += std::to_string(same + 1);
    m_vecEntries.push_back(std::move(entry));
    m_oSize = {};
}

std::size_t ShapeMeter::find(const std::string& name) const
{
    const auto found = std::find_if(m_vecEntries.begin(), m_vecEntries.end(),
                                    [&](const Entry& entry) { return entry.name == name; });
    return static_cast<std::size_t>(found - m_vecEntries.begin());
}

void ShapeMeter::addDelta(const std::string& text)
{
    const std::size_t minus = std::min(text.find('-'), text.size());
    const std::size_t left = find(text.substr(0, minus));
    const std::size_t right = find(text.substr(std::min(minus + 1, text.size())));
    if (left == m_vecEntries.size() || right == m_vecEntries.size()) {
        std::string names;
        for (const Entry& entry : m_vecEntries)
            names += (names.empty() ? "" : ", ") + entry.name;
        VELMO_THROW("delta: '" + text + "' is not LEFT-RIGHT of " + names);
    }
    m_vecDeltas.push_back({text, left, right, dNone});
}

void ShapeMeter::place(cv::Size size)
{
    std::vector<std::vector<Run>> placed;
    for (const Entry& entry : m_vecEntries)
        placed.push_back(entry.shape.runs(size, entry.name));
    for (std::size_t i = 0; i < placed.size(); ++i)
        m_vecEntries[i].runs = std::move(placed[i]);
    m_oSize = size;
}

void ShapeMeter::measure(const Frame& frame)
{
    if (frame.empty())
        VELMO_THROW("a frame without pixels cannot be measured");
    if (frame.size() != m_oSize)
        place(frame.size());
    m_vecCounts.resize(m_bKeepsCounts ? m_vecEntries.size() : 0);
    for (std::size_t i = 0; i < m_vecEntries.size(); ++i) {
        Entry& entry = m_vecEntries[i];
        m_oScratch.clear();
        m_oScratch.add(frame, entry.runs);
        summarise(entry.figures, m_oScratch, m_oThermometer);
        findEnds(entry.figures, frame, entry.runs);
        if (m_bKeepsCounts)
            m_vecCounts[i].add(m_oScratch);
    }
    for (Delta& delta : m_vecDeltas) {
        const double left = m_vecEntries[delta.left].figures.mean;
        const double right = m_vecEntries[delta.right].figures.mean;
        delta.difference = std::isfinite(left) && std::isfinite(right) ? left - right : dNone;
    }
}

} // namespace velmo::camera

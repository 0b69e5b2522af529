#include "camera/measures/ValueCounts.h"

#include <algorithm>

namespace velmo::camera {

void ValueCounts::add(const Frame& frame, const std::vector<Run>& runs)
{
    for (const Run& run : runs)
        for (int column = run.begin; column < run.end; ++column) {
            const int value = frame[run.row][column];
            ++m_vecCounts[static_cast<std::size_t>(value)];
            m_s32Low = std::min(m_s32Low, value);
            m_s32High = std::max(m_s32High, value);
        }
    for (const Run& run : runs)
        m_nTotal += static_cast<std::size_t>(run.end - run.begin);
}

void ValueCounts::add(const ValueCounts& other)
{
    for (int value = other.m_s32Low; value <= other.m_s32High; ++value)
        m_vecCounts[static_cast<std::size_t>(value)] += other.of(value);
    m_nTotal += other.m_nTotal;
    m_s32Low = std::min(m_s32Low, other.m_s32Low);
    m_s32High = std::max(m_s32High, other.m_s32High);
}

void ValueCounts::clear()
{
    // Only what was counted: a spot does not pay for all values.
    for (int value = m_s32Low; value <= m_s32High; ++value)
        m_vecCounts[static_cast<std::size_t>(value)] = 0;
    m_nTotal = 0;
    m_s32Low = Scale::s32Values - 1;
    m_s32High = 0;
}

unsigned short ValueCounts::atRank(std::size_t rank) const
{
    std::uint64_t upTo = 0;
    int value = m_s32Low;
    for (; value < m_s32High; ++value) {
        upTo += of(value);
        if (upTo > rank)
            break;
    }
    return static_cast<unsigned short>(value);
}

} // namespace velmo::camera

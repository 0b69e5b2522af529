#pragma once

#include "camera/Frame.h"
#include "camera/measures/Shape.h"
#include "camera/temperature/Scale.h"
#include "core/Export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmo::camera {

/// How often each value occurs. Takes half a megabyte.
class VELMO_API ValueCounts
{
public:
    void add(const Frame& frame, const std::vector<Run>& runs);
    void add(const ValueCounts& other);
    void clear();

    std::size_t total() const { return m_nTotal; }

    /// How often one of the 65,536 values occurs.
    std::uint64_t of(int value) const { return m_vecCounts[static_cast<std::size_t>(value)]; }

    /// The least and the greatest value there is; of none 65535 and 0.
    int low() const { return m_s32Low; }
    int high() const { return m_s32High; }

    /// The value that stands at a place below total() when all are put in order.
    unsigned short atRank(std::size_t rank) const;

private:
    std::vector<std::uint64_t> m_vecCounts = std::vector<std::uint64_t>(Scale::s32Values);
    std::size_t m_nTotal = 0;
    int m_s32Low = Scale::s32Values - 1;
    int m_s32High = 0;
};

} // namespace velmo::camera

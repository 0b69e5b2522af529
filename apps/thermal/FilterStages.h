#pragma once

#include "apps/thermal/Stage.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace thermal {

/// The filters that a command puts before the colours, as typed. An empty text leaves one out.
struct FilterOptions
{
    std::string temporal; ///< GAIN:FACTOR

    void addTo(CLI::App& command);
};

/// The chain in the order in which the filters build on each other.
/// @throws UsageError  that names option, value and range
Chain makeChain(const FilterOptions& options);

std::unique_ptr<Stage> makeTemporal(int gain, int factor);

} // namespace thermal

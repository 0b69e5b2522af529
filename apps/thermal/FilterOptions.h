#pragma once

#include "camera/stages/Chain.h"

#include <string>

namespace CLI {
class App;
}

namespace thermal {

/// The filters that a command puts before the colours, as typed. An empty text leaves one out.
struct FilterOptions
{
    // What --denoise stands for; docs/denoise-defaults.md has the measurements.
    static constexpr const char* pDefaultPattern = "15:8:4";
    static constexpr const char* pDefaultTemporal = "16:1843";
    static constexpr const char* pDefaultSpatial = "4";

    std::string badPixels; ///< file of records
    bool denoise = false;
    std::string pattern;  ///< THRESHOLD:LINE:FRAME
    std::string temporal; ///< GAIN:FACTOR
    std::string spatial;  ///< GAIN
    std::string downsize; ///< 160x120 or 120x90

    void addTo(CLI::App& command);

    bool any() const;
};

/// The chain in the order in which the filters build on each other. With `denoise` the three noise filters
/// take their default parameters where none are given.
/// @throws Exception  that names option, value and range
velmo::camera::Chain makeChain(const FilterOptions& options);

/// The same without the bad pixels, behind what is in the chain already.
void addFilters(velmo::camera::Chain& chain, const FilterOptions& options);

} // namespace thermal

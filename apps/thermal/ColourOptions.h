#pragma once

#include "camera/colours/Colouring.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace thermal {

/// What chooses the colours, as typed.
struct ColourOptions
{
    std::string usual = "Ironbow"; ///< if neither of the following is given
    std::string palette;
    std::string paletteFile;
    std::vector<std::string> regions; ///< LOW:HIGH:RRGGBB each
    std::string humidity;             ///< CELSIUS:PERCENT; empty: the palette shows temperatures

    void addTo(CLI::App& command);
};

/// @throws Exception  that names option and value
velmo::camera::Colouring makeColouring(const ColourOptions& options);

} // namespace thermal

#pragma once

namespace CLI {
class App;
}

namespace thermal {

// Parts of the command pixels with files of their own.

void addPixelsFind(CLI::App& pixels);
void addPixelsMaps(CLI::App& pixels); ///< merge and diff

} // namespace thermal

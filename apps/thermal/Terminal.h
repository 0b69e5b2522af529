#pragma once

#include <string>

namespace thermal {

/// A text from outside as a terminal may show it: what would move the cursor, change colours or the title is
/// written as \x1b and the like, and of a long text the middle is left out.
std::string forTerminal(const std::string& text);

/// One line about it for standard error.
std::string complaint(const std::string& message);

} // namespace thermal

#include "recordings/UnitText.h"

#include <sstream>

namespace velmo::recordings {

std::string unitLine(const std::string& unit)
{
    return std::string(unitKeyword) + ": " + unit;
}

std::string unitInLines(const std::string& text)
{
    const std::string begin = unitLine("");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(begin, 0) == 0)
            return line.substr(begin.size());
    return {};
}

} // namespace velmo::recordings

#pragma once

#include "apps/thermal/Options.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace thermal {

/// A bar, or a counter where the end is unknown, on one line of standard error; nothing at all where that
/// is no terminal, or when quiet. Disappears when destroyed.
class Progress
{
public:
    Progress(std::string what, std::optional<std::size_t> total, bool quiet);
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// One more is done.
    void step();

private:
    void show() const;

    std::string m_strWhat;
    std::optional<std::size_t> m_nTotal;
    std::size_t m_nDone = 0;
    bool m_bShown;
    std::chrono::steady_clock::time_point m_oLastShown;
};

/// Takes the bar off a terminal.
inline const std::string clearLine = "\r\033[K";

/// Adds the option that switches the bar off.
void addQuiet(const Command& command, bool& quiet);

/// "[######......] 12/24": `width` cells between the brackets.
std::string progressBar(std::size_t done, std::size_t total, std::size_t width);

} // namespace thermal

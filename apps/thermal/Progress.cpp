#include "apps/thermal/Progress.h"

#include "apps/thermal/Terminal.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include <unistd.h>

namespace thermal {

std::string progressBar(std::size_t done, std::size_t total, std::size_t width)
{
    const std::size_t filled = total == 0 ? width : width * std::min(done, total) / total;
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " + std::to_string(done) +
           "/" + std::to_string(total);
}

void addQuiet(const Command& command, bool& quiet)
{
    command.flag("--quiet", quiet, "No progress bar");
}

Progress::Progress(std::string what, std::optional<std::size_t> total, bool quiet)
    : m_strWhat(std::move(what)), m_nTotal(total), m_bShown(!quiet && isatty(STDERR_FILENO) == 1)
{}

Progress::~Progress()
{
    if (m_bShown)
        std::cerr << clearLine << std::flush;
}

void Progress::step()
{
    ++m_nDone;
    if (!m_bShown)
        return;
    // A terminal that is written to at every frame is slower than the frames.
    const auto now = std::chrono::steady_clock::now();
    if (now - m_oLastShown < std::chrono::milliseconds(100))
        return;
    m_oLastShown = now;
    show();
}

void Progress::show() const
{
    std::cerr << clearLine << forTerminal(m_strWhat) << " "
              << (m_nTotal ? progressBar(m_nDone, *m_nTotal, 30) : std::to_string(m_nDone)) << std::flush;
}

} // namespace thermal

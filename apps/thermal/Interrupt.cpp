#include "apps/thermal/Interrupt.h"

#include "apps/thermal/Progress.h"
#include "apps/thermal/Terminal.h"
#include "recordings/Outputs.h"

#include <csignal>
#include <string>
#include <thread>

#include <unistd.h>

namespace thermal {
namespace {

constexpr int s32ExitCode = 130; ///< 128 + SIGINT, what shells expect

void waitForInterrupt(const sigset_t& signals)
{
    int received = 0;
    sigwait(&signals, &received);
    // The main thread may be anywhere: nothing of it is waited for, and from here on it changes no file.
    velmo::recordings::Outputs::abandonAll();
    // Past the streams: the main thread may hold them.
    const std::string line = (isatty(STDERR_FILENO) == 1 ? clearLine : "") + complaint("interrupted");
    static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
    _exit(s32ExitCode);
}

/// Whether a terminal that goes is to be passed over, as nohup asks for.
bool staysWithoutTerminal()
{
    struct sigaction action = {};
    return sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

void endOnInterrupts()
{
    sigset_t signals = {};
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (!staysWithoutTerminal())
        sigaddset(&signals, SIGHUP);
    // Blocked here and in all threads to come, they reach the one that waits for them.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread(waitForInterrupt, signals).detach();
    // A file that gets too large for the user's limit is a failed write, like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace thermal

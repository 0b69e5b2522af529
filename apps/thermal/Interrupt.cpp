#include "apps/thermal/Interrupt.h"

#include <csignal>

namespace thermal {
namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteInterrupt(int)
{
    interrupted = 1;
}

} // namespace

void listenForInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    // No SA_RESTART: a read that waits for the next frame has to return.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void checkInterrupt()
{
    if (interrupted)
        throw Interrupted();
}

} // namespace thermal

#include "apps/algoserver/signals.h"

#include <csignal>

namespace {

std::atomic<bool> interrupted = false;

constexpr int EndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The first Ctrl-C ends the run properly; a second one finds the default action and ends the process.
void OnInterrupt(int)
{
    interrupted = true;
    for (const int signal : EndingSignals)
        std::signal(signal, SIG_DFL);
}

}  // namespace

void CatchSignals()
{
    for (const int signal : EndingSignals)
        std::signal(signal, OnInterrupt);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

const std::atomic<bool>& GetInterrupted()
{
    return interrupted;
}

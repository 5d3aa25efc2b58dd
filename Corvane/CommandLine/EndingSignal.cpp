#include "EndingSignal.h"

#include <csignal>
#include <cstdlib>

namespace corvane::commandline {

namespace {

std::atomic<bool> gCancel{false};
std::atomic<int> gSignal{0};

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may touch nothing else");

// By `quick_exit`, which a handler may call, and which removes the temporary file if it can.
void OnEndingSignal(int signal) {
    if (gCancel.exchange(true)) {
        ::signal(signal, SIG_DFL);
        std::quick_exit(128 + signal);
    }
    gSignal = signal;
}

} // namespace

void EndingSignal::Take() {
    struct sigaction action {};
    action.sa_handler = OnEndingSignal;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        // Whoever started the program may have it ignore a signal, as nohup does.
        if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
    }
}

const std::atomic<bool>& EndingSignal::Cancelled() {
    return gCancel;
}

int EndingSignal::ExitStatus() {
    return 128 + gSignal;
}

} // namespace corvane::commandline

// The file is removed by a handler of the signals, which afterwards lets the signal have its way:
// the exit status is the signal's own.
#include "platform/linux/os/held_signals.h"

#include <limits.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace vistel::platform {

namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

// Any thread may meet the signal. While the file is created, renamed or copied nobody can tell
// whether it has its name: a signal then waits for the end of that.
enum Stage : int { none, changing, unfinished, ending };
std::atomic<int> stage{none};
std::atomic<int> heldBack{0};  // the signal that waits
char path[PATH_MAX];
static_assert(std::atomic<int>::is_always_lock_free, "to be used by a signal handler");

// Only what a signal handler may do.
void endBySignal(int number) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    raise(number);
}

extern "C" void endUnfinished(int number) {
    const int before = errno;
    for (int now = stage; now != ending;) {
        if (now == changing) {
            heldBack = number;
            // Unless that has ended meanwhile, without having seen it.
            if (stage == changing) break;
            now = stage;
            continue;
        }
        if (!stage.compare_exchange_weak(now, ending)) continue;
        if (now == unfinished) unlink(path);
        endBySignal(number);
        break;
    }
    errno = before;
}

void catchSignals() {
    struct sigaction action {};
    action.sa_handler = endUnfinished;
    action.sa_flags = SA_RESTART;
    for (const int number : signals) {
        struct sigaction present {};
        sigaction(number, nullptr, &present);
        if (present.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
    }
}

void letSignalsGo() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (const int number : signals) {
        struct sigaction present {};
        sigaction(number, nullptr, &present);
        if (present.sa_handler == endUnfinished) sigaction(number, &action, nullptr);
    }
}

}  // namespace

void beginChange() {
    if (stage == none) catchSignals();
    for (int now = stage; now == ending || !stage.compare_exchange_weak(now, changing);) {
        if (now == ending) pause();  // another thread is about to end the process
    }
}

void endChange(const std::string& name) {
    const int error = errno;
    std::memcpy(path, name.c_str(), name.size() + 1);
    const Stage next = name.empty() ? none : unfinished;
    stage = next;
    if (const int number = heldBack.exchange(0)) endUnfinished(number);
    if (next == none) letSignalsGo();
    errno = error;
}

}  // namespace vistel::platform

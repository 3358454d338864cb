// The file is removed by a handler of the signals that ask a process to end, which afterwards lets
// the signal have its way: the exit status is the signal's own.
#include "platform/unfinished_file.h"

#include <limits.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "platform/files.h"

namespace vistel::platform {

namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ};

// Any thread may meet the signal. While the file is created or renamed nobody can tell whether it
// has its name: a signal then waits for the end of that.
enum Stage : int { none, changing, unfinished, ending };
std::atomic<int> stage{none};
std::atomic<int> heldBack{0};  // the signal that waits
char path[PATH_MAX];
static_assert(std::atomic<int>::is_always_lock_free, "to be used by a signal handler");

extern "C" void endUnfinished(int number);

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

// Signals that are ignored stay so; who handles one itself ends in its own way.
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

void beginChange() {
    for (int now = stage; now == ending || !stage.compare_exchange_weak(now, changing);) {
        if (now == ending) pause();  // another thread is about to end the process
    }
}

void endChange(Stage next) {
    const int error = errno;
    stage = next;
    if (const int number = heldBack.exchange(0)) endUnfinished(number);
    if (next == none) letSignalsGo();
    errno = error;
}

}  // namespace

FILE* UnfinishedFile::create(const std::string& name) {
    if (name.size() >= sizeof path) {
        errno = ENAMETOOLONG;
        return nullptr;
    }
    name_ = name;
    catchSignals();
    beginChange();
    std::memcpy(path, name.c_str(), name.size() + 1);
    FILE* file = std::fopen(path, "w+xe");
    if (!file) name_.clear();
    endChange(file ? unfinished : none);
    return file;
}

bool UnfinishedFile::replace(const std::string& to) {
    beginChange();
    const bool replaced = replaceFile(name_, to);
    if (replaced) name_.clear();
    endChange(replaced ? none : unfinished);
    return replaced;
}

UnfinishedFile::~UnfinishedFile() {
    if (name_.empty()) return;
    beginChange();
    unlink(name_.c_str());
    endChange(none);
}

}  // namespace vistel::platform

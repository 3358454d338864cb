#include "platform/linux/os/interrupts.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/linux/os/stuck_output.h"
#include "platform/process.h"

namespace vistel::platform {

static volatile sig_atomic_t requested = 0;
static int wakePipe[2] = {-1, -1};

extern "C" {
// Only what a signal handler may do.
static void noteInterrupt(int signalNumber) {
    const int before = errno;
    if (requested) {
        signal(signalNumber, SIG_DFL);
        raise(signalNumber);
    }
    requestInterrupt();
    errno = before;
}

// After an interrupt nobody is waited for who does not read what the program says. The signal comes
// to the first thread, whose write then begins anew.
static void noteAlarm(int) {
    dropStuckOutput();
    alarm(1);
}
}

void catchInterrupts() {
    if (wakePipe[0] >= 0 || pipe2(wakePipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    ignoreClosedReaders();
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present {};
        sigaction(number, nullptr, &present);
        // Started with the signal ignored (in the background): it stays ignored.
        if (present.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
    }
    action.sa_handler = noteAlarm;
    sigaction(SIGALRM, &action, nullptr);
}

void ignoreClosedReaders() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

bool interruptRequested() { return requested != 0; }

// The byte is never read: whoever waits on the pipe finds it ready from now on.
void requestInterrupt() {
    requested = 1;
    if (wakePipe[1] < 0) return;
    alarm(1);
    [[maybe_unused]] const ssize_t written = write(wakePipe[1], "!", 1);
}

int interruptDescriptor() { return wakePipe[0]; }

}  // namespace vistel::platform

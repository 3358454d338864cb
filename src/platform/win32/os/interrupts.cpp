#include <atomic>

#include "platform/process.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

std::atomic<bool> interrupted{false};
DWORD firstThread = 0;

// Runs on a thread of the system's own. FALSE hands over to the default handler, which ends the
// process.
BOOL WINAPI consoleHandler(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    return interrupted.exchange(true) ? FALSE : TRUE;
}

}  // namespace

void catchInterrupts() {
    firstThread = GetCurrentThreadId();
    SetConsoleCtrlHandler(consoleHandler, TRUE);
}

void ignoreClosedReaders() {}  // it is a failed write here

bool interruptRequested() { return interrupted; }

void requestInterrupt() {
    interrupted = true;
    PostThreadMessageW(firstThread, WM_NULL, 0, 0);
}

}  // namespace vistel::platform

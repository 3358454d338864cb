// Nobody can tell here whether a pipe takes more, and a write that waits for its reader cannot be
// called off on every system: a thread of its own writes. One whose reader does not read waits
// until the program ends.
#include <io.h>
#include <process.h>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/report_reader.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

static bool stuck = false;

static void writeNow(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

// What the writing thread and the one that waits for it share.
struct Writer {
    const HANDLE wanted = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    const HANDLE written = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::string text;

    static unsigned __stdcall run(void* writer) {
        auto& self = *static_cast<Writer*>(writer);
        while (WaitForSingleObject(self.wanted, INFINITE) == WAIT_OBJECT_0) {
            writeNow(self.text);
            SetEvent(self.written);
        }
        return 0;
    }
};

// Null when it could not be started. It lives until the process ends, and so does its thread.
static Writer* startWriter() {
    auto* writer = new Writer;
    const bool runs = writer->wanted && writer->written &&
                      _beginthreadex(nullptr, 0, Writer::run, writer, 0, nullptr) != 0;
    return runs ? writer : nullptr;
}

void writeReport(const std::string& text, const GoOn& goOn) {
    if (stuck) return;
    if (GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(1))) != FILE_TYPE_PIPE)
        return writeNow(text);
    static Writer* const writer = startWriter();
    if (!writer) return writeNow(text);
    writer->text = text;
    SetEvent(writer->wanted);
    const auto ready = [] { return WaitForSingleObject(writer->written, 1) == WAIT_OBJECT_0; };
    stuck = !awaitReportReader(ready, goOn);
}

// The run-time library's own end would wait for the stream.
void leaveStuckReport(int status) {
    if (!stuck) return;
    std::fflush(stderr);
    endCommands();
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
}

}  // namespace vistel::platform

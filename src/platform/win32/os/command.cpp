#include "platform/command.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "platform/process.h"
#include "platform/win32/windows_api.h"

// Needs what comes before.
#include <tlhelp32.h>

namespace vistel::platform {

namespace {

struct HandleCloser {
    void operator()(void* handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

Handle openProcess(DWORD id) {
    constexpr DWORD rights =
        PROCESS_QUERY_INFORMATION | PROCESS_TERMINATE | PROCESS_SET_QUOTA | SYNCHRONIZE;
    return Handle(OpenProcess(rights, FALSE, id));
}

// In the system's own unit of 100 nanoseconds.
uint64_t joined(const FILETIME& time) {
    return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

uint64_t now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return joined(time);
}

uint64_t startTime(HANDLE process) {
    FILETIME start, unused[3];
    if (!GetProcessTimes(process, &start, &unused[0], &unused[1], &unused[2])) return 0;
    return joined(start);
}

// Empty when the system does not tell: there is always at least this one.
std::vector<PROCESSENTRY32> allProcesses() {
    std::vector<PROCESSENTRY32> all;
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (list == INVALID_HANDLE_VALUE) return all;
    const Handle closer(list);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(list, &entry); more; more = Process32Next(list, &entry))
        all.push_back(entry);
    return all;
}

constexpr intptr_t unknownProcess = -1;

// The run-time library starts a command without telling which process it is: the one that this
// program has started last, since the given time; commands are started one at a time. It may have
// ended already, then there is none (0).
intptr_t processStartedSince(uint64_t since) try {
    const std::vector<PROCESSENTRY32> all = allProcesses();
    Handle newest;
    bool refused = all.empty();
    for (const PROCESSENTRY32& entry : all) {
        if (entry.th32ParentProcessID != GetCurrentProcessId()) continue;
        Handle process = openProcess(entry.th32ProcessID);
        // One that has ended since the list was made has no identifier any more.
        refused |= !process && GetLastError() != ERROR_INVALID_PARAMETER;
        if (!process || startTime(process.get()) < since) continue;
        if (newest && startTime(newest.get()) > startTime(process.get())) continue;
        newest = std::move(process);
    }
    if (!newest && refused) return unknownProcess;
    return reinterpret_cast<intptr_t>(newest.release());
} catch (const std::bad_alloc&) {
    return unknownProcess;
}

// The interpreter takes the outermost quotes off a command of ours: a further word belongs inside.
std::string withoutErrors(const std::string& text) {
    constexpr const char* nowhere = " 2>NUL";
    const bool quoted = text.starts_with("\"\"") && text.ends_with('"');
    return quoted ? text.substr(0, text.size() - 1) + nowhere + "\"" : text + nowhere;
}

// The process and all that come from it, parents first; it may have ended, but its identifier is
// taken as long as we have a handle to it. Others are used again: who is older than its parent
// comes from another one, and who is younger than the list is not the one in it.
std::vector<Handle> familyOf(HANDLE head) {
    const std::vector<PROCESSENTRY32> all = allProcesses();
    const uint64_t listed = now();
    std::vector<Handle> family;
    const auto addChildren = [&](HANDLE parent) {
        const DWORD id = GetProcessId(parent);
        const uint64_t start = startTime(parent);
        for (const PROCESSENTRY32& entry : all) {
            if (entry.th32ParentProcessID != id || entry.th32ProcessID == id) continue;
            Handle process = openProcess(entry.th32ProcessID);
            if (!process) continue;
            const uint64_t started = startTime(process.get());
            if (started >= start && started <= listed) family.push_back(std::move(process));
        }
    };
    addChildren(head);
    for (size_t i = 0; i < family.size(); ++i) addChildren(family[i].get());
    return family;
}

// Whatever a member of a job starts is one, too, and a job has no end of its own: those that were
// released go on when nobody has a handle to it any more. The command itself runs already, so what
// it has started in its first moments may be missing. 0 when the system refuses.
intptr_t jobOf(HANDLE process) {
    Handle job(CreateJobObjectA(nullptr, nullptr));
    if (!job || !AssignProcessToJobObject(job.get(), process)) return 0;
    return reinterpret_cast<intptr_t>(job.release());
}

HANDLE handleOf(intptr_t value) { return reinterpret_cast<HANDLE>(value); }

bool isKnown(const Command& command) {
    return command.process != 0 && command.process != unknownProcess;
}

bool jobHasMembers(HANDLE job) {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION members{};
    return QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &members,
                                     sizeof members, nullptr) &&
           members.ActiveProcesses > 0;
}

}  // namespace

bool startCommand(const std::string& text, bool reading, CommandErrors errors, Command& command) {
    const std::string line = errors == CommandErrors::shown ? text : withoutErrors(text);
    // What was printed so far must come before what the command prints.
    std::fflush(stdout);
    std::fflush(stderr);
    const uint64_t since = now();
    FILE* stream = _popen(line.c_str(), reading ? "rb" : "wb");
    if (!stream) return false;
    command.stream = stream;
    command.process = processStartedSince(since);
    if (isKnown(command)) command.family = jobOf(handleOf(command.process));
    return true;
}

// The stream lives on, at the null device: the run-time library knows the command by it. Without a
// descriptor for that device it lives on as a copy of a standard stream, which nobody uses.
void hangUp(Command& command) {
    std::fflush(command.stream);
    const int nothing = _open("NUL", _O_RDWR | _O_BINARY | _O_NOINHERIT);
    for (const int instead : {nothing, 0, 1, 2})
        if (instead >= 0 && _dup2(instead, _fileno(command.stream)) == 0) break;
    if (nothing >= 0) _close(nothing);
}

// The run-time library's own waiting would keep every other command from being started and closed,
// and has no limit: its record of a command that is not known to have ended is left alone.
std::optional<int> collect(Command& command, unsigned milliseconds) {
    if (command.process == unknownProcess) return -1;
    const HANDLE process = handleOf(command.process);
    if (process && WaitForSingleObject(process, milliseconds) == WAIT_TIMEOUT) return std::nullopt;
    if (process) CloseHandle(process);
    if (command.family) CloseHandle(handleOf(command.family));
    return _pclose(command.stream);
}

// Nobody can refuse here. The job ends all its members at one stroke; what was started before there
// was a job is found by its parents.
void endFamily(Command& command, bool) {
    if (!isKnown(command)) return;
    const HANDLE head = handleOf(command.process);
    const std::vector<Handle> family = familyOf(head);
    TerminateProcess(head, 1);
    for (const Handle& process : family) TerminateProcess(process.get(), 1);
    if (command.family) TerminateJobObject(handleOf(command.family), 1);
}

bool familyHasEnded(Command& command) {
    if (!isKnown(command)) return true;
    const bool headHasEnded = WaitForSingleObject(handleOf(command.process), 0) == WAIT_OBJECT_0;
    return headHasEnded && !(command.family && jobHasMembers(handleOf(command.family)));
}

}  // namespace vistel::platform

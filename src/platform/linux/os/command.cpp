#include "platform/command.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/linux/os/environment_lock.h"

namespace vistel::platform {

namespace {

// A pipe of this size takes several tiles, so that the command and its reader need not take turns.
constexpr int pipeBytes = 1 << 20;

struct SpawnSettings {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;

    SpawnSettings() {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        // Ignored signals survive the start of a program. This one must not: a command whose reader
        // has gone away is to end.
        sigset_t reset;
        sigemptyset(&reset);
        sigaddset(&reset, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &reset);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
};

// What a command starts is its family: each member finds this variable in the environment it was
// born with, whoever its parent is by now. No other process of this system bears the same value.
constexpr std::string_view familyVariable = "VISTEL_COMMAND=";

std::string familyMark(intptr_t family) {
    static const auto firstStart = std::chrono::steady_clock::now().time_since_epoch().count();
    return std::string(familyVariable) + std::to_string(getpid()) + "." +
           std::to_string(firstStart) + "." + std::to_string(family);
}

// Our own environment with the mark. To be used while the environment stays as it is.
std::vector<char*> markedEnvironment(std::string& mark) {
    std::vector<char*> variables;
    for (char** variable = environ; *variable; ++variable)
        if (!std::string_view(*variable).starts_with(familyVariable))
            variables.push_back(*variable);
    variables.push_back(mark.data());
    variables.push_back(nullptr);
    return variables;
}

// Starts the command with `end` as its descriptor `target`. posix_spawn copies no page tables,
// which counts when gigabytes of frames are in memory.
bool startShell(const std::string& command, int end, int target, CommandErrors errors,
                char* const* environment, pid_t& child) {
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.files, end, target);
    if (errors == CommandErrors::dropped)
        posix_spawn_file_actions_addopen(&settings.files, 2, "/dev/null", O_WRONLY, 0);
    char shell[] = "sh", option[] = "-c";
    char* arguments[] = {shell, option, const_cast<char*>(command.c_str()), nullptr};
    const int error = posix_spawn(&child, "/bin/sh", &settings.files, &settings.attributes,
                                  arguments, environment);
    if (error != 0) errno = error;
    return error == 0;
}

struct Process {
    pid_t id = 0, parent = 0;
    uint64_t start = 0;  // in ticks since the system started
    bool ended = false;  // and only has not been collected
};

// From the line that the system keeps of it: "12 (name) S 1 ...", where the name may hold anything.
// The state is the third field, the parent the fourth, the start the 22nd.
std::optional<Process> processOf(pid_t id) {
    const std::string name = "/proc/" + std::to_string(id) + "/stat";
    const FilePtr file(openFile(name, "r"));
    char line[1024];
    if (!file || !std::fgets(line, sizeof line, file.get())) return std::nullopt;
    const char* behindName = std::strrchr(line, ')');
    if (!behindName) return std::nullopt;
    Process process{id};
    char state = 0;
    unsigned long long start = 0;
    if (std::sscanf(behindName + 1,
                    " %c %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s "
                    "%llu",
                    &state, &process.parent, &start) != 3)
        return std::nullopt;
    process.start = start;
    process.ended = state == 'Z' || state == 'X';
    return process;
}

std::vector<Process> allProcesses() {
    std::vector<Process> all;
    DIR* folder = opendir("/proc");
    if (!folder) return all;
    while (const dirent* entry = readdir(folder)) {
        const pid_t id = std::atoi(entry->d_name);
        if (id <= 0) continue;
        if (const std::optional<Process> process = processOf(id)) all.push_back(*process);
    }
    closedir(folder);
    return all;
}

bool bearsMark(pid_t process, const std::string& mark) {
    const std::string name = "/proc/" + std::to_string(process) + "/environ";
    const FilePtr file(openFile(name, "r"));
    if (!file) return false;
    std::string environment;
    char block[4096];
    for (size_t got; (got = std::fread(block, 1, sizeof block, file.get())) > 0;)
        environment.append(block, got);
    // Each variable ends with a zero byte.
    const std::string ending = mark + '\0';
    return environment.starts_with(ending) || environment.find('\0' + ending) != std::string::npos;
}

ProcessMark markOf(const Process& process) { return {process.id, process.start}; }

bool contains(const std::vector<ProcessMark>& marks, const ProcessMark& mark) {
    return std::find(marks.begin(), marks.end(), mark) != marks.end();
}

// The living members of the command's family: the command itself, those that bear its mark, those
// that were found before, and all that come from one of these (who takes the mark out of its
// environment is known by its parent as long as that lives).
std::vector<ProcessMark> familyOf(const Command& command) {
    const std::vector<Process> all = allProcesses();
    const auto head = std::find_if(all.begin(), all.end(),
                                   [&](const Process& p) { return p.id == command.process; });
    if (head == all.end()) return {};
    const std::string mark = familyMark(command.family);
    std::vector<const Process*> family;
    std::vector<bool> known(all.size(), false);
    const auto add = [&](const Process& process) {
        known[static_cast<size_t>(&process - all.data())] = true;
        family.push_back(&process);
    };
    for (const Process& process : all) {
        const bool young = process.start >= head->start;
        if (young && (process.id == head->id || contains(command.told, markOf(process)) ||
                      bearsMark(process.id, mark)))
            add(process);
    }
    for (size_t i = 0; i < family.size(); ++i)
        for (const Process& process : all)
            if (process.parent == family[i]->id && !known[static_cast<size_t>(&process - &all[0])])
                add(process);
    std::vector<ProcessMark> living;
    for (const Process* process : family)
        if (!process->ended) living.push_back(markOf(*process));
    return living;
}

bool lives(const ProcessMark& mark) {
    const std::optional<Process> process = processOf(static_cast<pid_t>(mark.id));
    return process && !process->ended && process->start == mark.start;
}

}  // namespace

bool startCommand(const std::string& text, bool reading, CommandErrors errors, Command& command) {
    static intptr_t families = 0;
    const intptr_t family = ++families;
    std::string mark = familyMark(family);
    const std::lock_guard lock(environmentLock());
    const std::vector<char*> environment = markedEnvironment(mark);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    const int ours = reading ? ends[0] : ends[1], theirs = reading ? ends[1] : ends[0];
    (void)fcntl(ours, F_SETPIPE_SZ, pipeBytes);  // a larger one is a help, no need
    FILE* stream = fdopen(ours, reading ? "r" : "w");
    if (!stream) close(ours);
    pid_t child = 0;
    const bool started =
        stream && startShell(text, theirs, reading ? 1 : 0, errors, environment.data(), child);
    const int error = errno;
    close(theirs);
    if (stream && !started) std::fclose(stream);
    errno = error;
    if (!started) return false;
    command.stream = stream;
    command.process = child;
    command.family = family;
    return true;
}

void hangUp(Command& command) {
    std::fclose(command.stream);
    command.stream = nullptr;
}

std::optional<int> collect(Command& command, unsigned milliseconds) {
    using Clock = std::chrono::steady_clock;
    const auto child = static_cast<pid_t>(command.process);
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == child) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        if (ended < 0 && errno != EINTR) return -1;
        if (Clock::now() >= end) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

// The terminal's own signals reach commands as they reach us: they are no group of their own, or
// they could not ask for a password. So they are told one by one; those that were started meanwhile
// come after them.
void endFamily(Command& command, bool force) {
    const int mostRounds = force ? 20 : 1;  // who is only asked is looked for again later
    std::vector<ProcessMark> told;
    for (int round = 0; round < mostRounds; ++round) {
        const size_t before = told.size();
        for (const ProcessMark& member : familyOf(command)) {
            if (contains(told, member)) continue;
            told.push_back(member);
            const auto id = static_cast<pid_t>(member.id);
            kill(id, force ? SIGKILL : SIGTERM);
            kill(id, SIGCONT);  // a stopped one would not notice
        }
        command.told = told;
        if (told.size() == before) return;
    }
}

// Looking for the family takes a while: as long as one of those that were told lives, no need.
bool familyHasEnded(Command& command) {
    if (std::any_of(command.told.begin(), command.told.end(), lives)) return false;
    if (familyOf(command).empty()) return true;
    endFamily(command, false);
    return false;
}

}  // namespace vistel::platform

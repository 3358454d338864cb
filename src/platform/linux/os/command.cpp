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

// Starts the command with `end` as its descriptor `target`. posix_spawn copies no page tables,
// which counts when gigabytes of frames are in memory.
bool startShell(const std::string& command, int end, int target, CommandErrors errors,
                pid_t& child) {
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.files, end, target);
    if (errors == CommandErrors::dropped)
        posix_spawn_file_actions_addopen(&settings.files, 2, "/dev/null", O_WRONLY, 0);
    char shell[] = "sh", option[] = "-c";
    char* arguments[] = {shell, option, const_cast<char*>(command.c_str()), nullptr};
    const std::lock_guard lock(environmentLock());
    const int error =
        posix_spawn(&child, "/bin/sh", &settings.files, &settings.attributes, arguments, environ);
    if (error != 0) errno = error;
    return error == 0;
}

// The process and its parent, from the line that the system keeps of it: "12 (name) S 1 ...", where
// the name may hold anything.
std::optional<pid_t> parentOf(pid_t process) {
    const std::string name = "/proc/" + std::to_string(process) + "/stat";
    const FilePtr file(openFile(name, "r"));
    char line[512];
    if (!file || !std::fgets(line, sizeof line, file.get())) return std::nullopt;
    const std::string text = line;
    const size_t behindName = text.rfind(')');
    if (behindName == std::string::npos || behindName + 4 > text.size()) return std::nullopt;
    return static_cast<pid_t>(std::atoi(text.c_str() + behindName + 3));
}

struct Process {
    pid_t id, parent;
};

std::vector<Process> allProcesses() {
    std::vector<Process> all;
    DIR* folder = opendir("/proc");
    if (!folder) return all;
    while (const dirent* entry = readdir(folder)) {
        const pid_t id = std::atoi(entry->d_name);
        if (id <= 0) continue;
        if (const std::optional<pid_t> parent = parentOf(id)) all.push_back({id, *parent});
    }
    closedir(folder);
    return all;
}

// The process and all that come from it, parents first.
std::vector<pid_t> familyOf(pid_t head) {
    const std::vector<Process> all = allProcesses();
    std::vector<pid_t> family = {head};
    for (size_t i = 0; i < family.size(); ++i) {
        for (const Process& process : all) {
            const bool known = std::find(family.begin(), family.end(), process.id) != family.end();
            if (process.parent == family[i] && !known) family.push_back(process.id);
        }
    }
    return family;
}

}  // namespace

bool startCommand(const std::string& text, bool reading, CommandErrors errors, Command& command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    const int ours = reading ? ends[0] : ends[1], theirs = reading ? ends[1] : ends[0];
    (void)fcntl(ours, F_SETPIPE_SZ, pipeBytes);  // a larger one is a help, no need
    FILE* stream = fdopen(ours, reading ? "r" : "w");
    if (!stream) close(ours);
    pid_t child = 0;
    const bool started = stream && startShell(text, theirs, reading ? 1 : 0, errors, child);
    const int error = errno;
    close(theirs);
    if (stream && !started) std::fclose(stream);
    errno = error;
    if (started) command = {stream, child};
    return started;
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
// they could not ask for a password.
void endWithDescendants(const Command& command, bool force) {
    for (const pid_t process : familyOf(static_cast<pid_t>(command.process))) {
        kill(process, force ? SIGKILL : SIGTERM);
        kill(process, SIGCONT);  // a stopped one would not notice
    }
}

}  // namespace vistel::platform

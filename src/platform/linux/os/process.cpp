#include "platform/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <mutex>

#include "platform/files.h"

namespace vistel::platform {

namespace {

struct Children {
    std::mutex lock;
    std::map<FILE*, pid_t> byStream;
};

Children& children() {
    static Children all;
    return all;
}

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
bool startShell(const std::string& command, int end, int target, pid_t& child) {
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.files, end, target);
    std::string shell = "sh", option = "-c", text = command;
    char* arguments[] = {shell.data(), option.data(), text.data(), nullptr};
    return posix_spawn(&child, "/bin/sh", &settings.files, &settings.attributes, arguments,
                       environ) == 0;
}

bool isProgram(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

std::string shellQuoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace

FILE* openPipe(const std::string& command, const char* mode) {
    const bool reading = mode[0] == 'r';
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return nullptr;
    const int ours = reading ? ends[0] : ends[1], theirs = reading ? ends[1] : ends[0];
    pid_t child = 0;
    const bool started = startShell(command, theirs, reading ? 1 : 0, child);
    close(theirs);
    FILE* stream = started ? fdopen(ours, reading ? "r" : "w") : nullptr;
    if (!stream) {
        close(ours);
        if (started) waitpid(child, nullptr, 0);
        return nullptr;
    }
    Children& all = children();
    const std::lock_guard guard(all.lock);
    all.byStream[stream] = child;
    return stream;
}

int closePipe(FILE* pipe) {
    if (!pipe) return -1;
    pid_t child = 0;
    {
        Children& all = children();
        const std::lock_guard guard(all.lock);
        const auto entry = all.byStream.find(pipe);
        if (entry == all.byStream.end()) return -1;
        child = entry->second;
        all.byStream.erase(entry);
    }
    std::fclose(pipe);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string quotedCommand(const std::string& program, const std::string& argument,
                          const std::string& furtherWords) {
    return quotedCommand(program, "", argument, furtherWords);
}

std::string quotedCommand(const std::string& program, const std::string& leadingWords,
                          const std::string& argument, const std::string& furtherWords) {
    std::string command = shellQuoted(program) + " ";
    if (!leadingWords.empty()) command += leadingWords + " ";
    command += shellQuoted(argument);
    if (!furtherWords.empty()) command += " " + furtherWords;
    return command;
}

std::optional<std::string> findProgram(const std::string& baseName) {
    const std::string self = programPath();
    const std::string beside = self.substr(0, self.rfind('/') + 1) + baseName;
    if (isProgram(beside)) return beside;
    const std::string path = environmentVariable("PATH").value_or("/usr/local/bin:/usr/bin:/bin");
    for (size_t start = 0; start <= path.size();) {
        const size_t end = std::min(path.find(':', start), path.size());
        const std::string folder = path.substr(start, end - start);
        const std::string candidate = (folder.empty() ? "." : folder) + "/" + baseName;
        if (isProgram(candidate)) return candidate;
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (!value) return std::nullopt;
    return std::string(value);
}

void setEnvironmentVariable(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace vistel::platform

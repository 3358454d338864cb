// The desktop knows which browser the user likes: "xdg-open" asks it. Where that is missing or
// fails the programs of the variable BROWSER are tried, as other programs do.
#include "platform/web_browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/linux/os/environment_lock.h"
#include "platform/process.h"

namespace vistel::platform {

namespace {

// A program that runs for so long has a page to show: what fails, fails sooner.
constexpr auto trial = std::chrono::seconds(2);
constexpr auto pause = std::chrono::milliseconds(5);

using Words = std::vector<std::string>;

Words split(const std::string& text, char separator) {
    Words words;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(separator, start), text.size());
        if (end > start) words.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

// One entry of the variable: "%s" in it stands for the address, which else comes last.
Words commandOf(const std::string& entry, const std::string& address) {
    Words words = split(entry, ' ');
    bool placed = false;
    for (std::string& word : words) {
        const size_t place = word.find("%s");
        if (place == std::string::npos) continue;
        word.replace(place, 2, address);
        placed = true;
    }
    if (!placed) words.push_back(address);
    return words;
}

std::vector<Words> browserCommands(const std::string& address) {
    std::vector<Words> commands = {{"xdg-open", address}};
    for (const std::string& entry : split(environmentVariable("BROWSER").value_or(""), ':'))
        commands.push_back(commandOf(entry, address));
    return commands;
}

// In a session of its own, so that what ends this program leaves it alone. What it has to say would
// appear between the lines of this program.
std::optional<pid_t> start(Words& words) {
    const bool whole = words.front().starts_with('/');
    const std::optional<std::string> program = whole ? words.front() : findProgram(words.front());
    if (!program) return std::nullopt;
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDERR_FILENO);
    sigset_t reset;
    sigemptyset(&reset);
    for (const int number : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM}) sigaddset(&reset, number);
    posix_spawnattr_setsigdefault(&attributes, &reset);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    const std::lock_guard lock(environmentLock());
    pid_t child = 0;
    const int error =
        posix_spawn(&child, program->c_str(), &files, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error == 0 ? std::optional(child) : std::nullopt;
}

bool succeeds(pid_t child) {
    const auto end = std::chrono::steady_clock::now() + trial;
    do {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        std::this_thread::sleep_for(pause);
    } while (std::chrono::steady_clock::now() < end);
    std::thread([child] { waitpid(child, nullptr, 0); }).detach();  // collected when it ends
    return true;
}

}  // namespace

bool showInBrowser(const std::string& address) {
    for (Words& words : browserCommands(address)) {
        const std::optional<pid_t> child = start(words);
        if (child && succeeds(*child)) return true;
    }
    return false;
}

}  // namespace vistel::platform

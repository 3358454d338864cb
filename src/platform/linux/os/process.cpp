#include "platform/process.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/files.h"
#include "platform/linux/os/environment_lock.h"
#include "platform/quoting.h"

namespace vistel::platform {

namespace {

bool isProgram(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string quotedWord(const std::string& word) {
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

std::string interpretedLine(const std::string& command) { return command; }

std::optional<std::string> findProgram(const std::string& baseName) {
    const std::string self = programPath();
    const std::string beside = self.substr(0, self.rfind('/') + 1) + baseName;
    if (isProgram(beside)) return beside;
    const std::string path = environmentVariable("PATH").value_or("/usr/local/bin:/usr/bin:/bin");
    for (size_t start = 0; start <= path.size();) {
        const size_t end = std::min(path.find(':', start), path.size());
        std::string program = path.substr(start, end - start);
        start = end + 1;
        if (!program.starts_with('/')) continue;
        program.append("/").append(baseName);
        if (isProgram(program)) return program;
    }
    return std::nullopt;
}

std::mutex& environmentLock() {
    static std::mutex lock;
    return lock;
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const std::lock_guard lock(environmentLock());
    const char* value = std::getenv(name.c_str());
    if (!value) return std::nullopt;
    return std::string(value);
}

void setEnvironmentVariable(const std::string& name, const std::string& value) {
    const std::lock_guard lock(environmentLock());
    setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace vistel::platform

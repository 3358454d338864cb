#include "platform/process.h"

#include <cstdlib>

#include "platform/files.h"
#include "platform/quoting.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

// Between quotes every sign stands for itself, but the name of a variable between two percent signs
// is replaced by its value, which no other sign prevents: a file with such a name is not found.
std::string quotedWord(const std::string& word) { return "\"" + word + "\""; }

// The interpreter strips the outermost pair of quotes of a command that begins with one.
std::string interpretedLine(const std::string& command) { return "\"" + command + "\""; }

std::optional<std::string> findProgram(const std::string& baseName) {
    const std::string fileName = baseName + ".exe";
    const std::string own = programPath();
    const std::string beside = own.substr(0, own.find_last_of("\\/") + 1) + fileName;
    if (fileExists(beside)) return beside;
    char path[1017] = {};
    char* filePart = nullptr;
    const DWORD capacity = sizeof path - 1;
    const DWORD length = SearchPathA(nullptr, fileName.c_str(), nullptr, capacity, path, &filePart);
    if (length == 0 || length >= capacity) return std::nullopt;
    return std::string(path, length);
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (!value) return std::nullopt;
    return std::string(value);
}

void setEnvironmentVariable(const std::string& name, const std::string& value) {
    _putenv((name + "=" + value).c_str());
}

}  // namespace vistel::platform

#include "platform/process.h"

#include <cstdlib>
#include <vector>

#include "platform/files.h"
#include "platform/quoting.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

bool isProgram(const std::string& name) {
    const DWORD attributes = GetFileAttributesA(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool isSlash(char c) { return c == '/' || c == '\\'; }

// Begins with a drive and its root, or with a server: does not count from the current folder.
bool isWholePath(const std::string& name) {
    if (name.size() >= 3 && name[1] == ':') return isSlash(name[2]);
    return name.size() >= 3 && isSlash(name[0]) && isSlash(name[1]);
}

// The folders of a search path; a semicolon between quotes belongs to a folder's name.
std::vector<std::string> foldersOf(const std::string& path) {
    std::vector<std::string> folders(1);
    bool quoted = false;
    for (const char c : path) {
        if (c == '"')
            quoted = !quoted;
        else if (c == ';' && !quoted)
            folders.emplace_back();
        else
            folders.back().push_back(c);
    }
    return folders;
}

}  // namespace

// Between quotes every sign stands for itself, but the name of a variable between two percent signs
// is replaced by its value, which no other sign prevents: a file with such a name is not found.
std::string quotedWord(const std::string& word) { return "\"" + word + "\""; }

// The interpreter strips the outermost pair of quotes of a command that begins with one.
std::string interpretedLine(const std::string& command) { return "\"" + command + "\""; }

// The system's own search begins in the current folder, which is that of the user's pictures: a
// program that lies among them is none of ours.
std::optional<std::string> findProgram(const std::string& baseName) {
    const std::string fileName = baseName + ".exe";
    const std::string own = programPath();
    const std::string beside = own.substr(0, own.find_last_of("\\/") + 1) + fileName;
    if (isProgram(beside)) return beside;
    for (const std::string& folder : foldersOf(environmentVariable("PATH").value_or(""))) {
        if (!isWholePath(folder)) continue;
        std::string program = folder;
        program.append("\\").append(fileName);
        if (isProgram(program)) return program;
    }
    return std::nullopt;
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

// A text file of name=value lines, one setting each, with "\n" and "\\" for the two characters that
// a line cannot hold.
#include "platform/settings_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/unfinished_file.h"

namespace vistel::platform {

namespace {

constexpr size_t longestSetting = 259;

std::string configurationFolder() {
    const std::string chosen = environmentVariable("XDG_CONFIG_HOME").value_or("");
    if (!chosen.empty() && chosen[0] == '/') return chosen + "/vistel";
    const std::string home = environmentVariable("HOME").value_or("");
    return home.empty() ? std::string{} : home + "/.config/vistel";
}

std::string escaped(const std::string& value) {
    std::string text;
    for (const char c : value) {
        if (c == '\\') {
            text += "\\\\";
        } else if (c == '\n') {
            text += "\\n";
        } else {
            text += c;
        }
    }
    return text;
}

std::string unescaped(const std::string& text) {
    std::string value;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            value += text[i];
        } else {
            value += text[++i] == 'n' ? '\n' : text[i];
        }
    }
    return value;
}

// No lines of a file that is not there. None where something is there that cannot be read whole.
std::optional<std::vector<std::string>> readLines(const std::string& file) {
    std::vector<std::string> lines;
    if (!fileExists(file)) return lines;
    if (!isRegularFile(file)) return std::nullopt;
    const FilePtr stream(openFile(file, "r"));
    if (!stream) return std::nullopt;
    std::string line;
    for (int c = std::getc(stream.get()); c != EOF; c = std::getc(stream.get())) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        lines.push_back(line);
        line.clear();
    }
    if (std::ferror(stream.get())) return std::nullopt;
    if (!line.empty()) lines.push_back(line);
    return lines;
}

// Another program that keeps its settings here waits until the file has been changed, but never for
// long: one that was stopped in the midst of it keeps nobody from ending.
class ChangeLock {
 public:
    explicit ChangeLock(const std::string& folder)
        : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        for (int tries = 0; tries < mostTries && flock(folder_, LOCK_EX | LOCK_NB) != 0; ++tries) {
            if (errno != EWOULDBLOCK) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    ~ChangeLock() {
        if (folder_ >= 0) close(folder_);
    }
    ChangeLock(const ChangeLock&) = delete;
    ChangeLock& operator=(const ChangeLock&) = delete;

 private:
    static constexpr int mostTries = 200;
    int folder_;
};

bool holds(const std::string& line, const std::string& name) {
    return line.size() > name.size() && line[name.size()] == '=' &&
           line.compare(0, name.size(), name) == 0;
}

void makeFolders(const std::string& path) {
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700);
    }
    mkdir(path.c_str(), 0700);
}

bool writeLines(FILE* file, const std::vector<std::string>& lines) {
    FilePtr stream(file);
    if (!stream) return false;
    for (const std::string& line : lines) {
        std::fwrite(line.data(), 1, line.size(), stream.get());  // may hold zeros
        std::fputc('\n', stream.get());
    }
    const bool written = std::fflush(stream.get()) == 0 && !std::ferror(stream.get()) &&
                         fsync(fileno(stream.get())) == 0;
    return std::fclose(stream.release()) == 0 && written;
}

}  // namespace

std::optional<std::string> readSetting(const std::string& name) {
    const std::string folder = configurationFolder();
    if (folder.empty()) return std::nullopt;
    const auto lines = readLines(folder + "/vistel.conf");
    if (!lines) return std::nullopt;
    for (const std::string& line : *lines) {
        if (!holds(line, name)) continue;
        return unescaped(line.substr(name.size() + 1)).substr(0, longestSetting);
    }
    return std::nullopt;
}

void writeSetting(const std::string& name, const std::string& value) {
    const std::string folder = configurationFolder();
    if (folder.empty()) return;
    makeFolders(folder);
    const std::string file = folder + "/vistel.conf";
    // Some keep their settings elsewhere and have links to them.
    const std::optional<std::string> target = followLinks(file);
    if (!target) {
        std::fprintf(stderr, "vistel: %s: settings are not saved: a symbolic link that leads %s\n",
                     file.c_str(), errno == ELOOP ? "in a circle" : "nowhere");
        return;
    }
    const ChangeLock lock(folder);
    auto lines = readLines(file);
    if (!lines) return;  // what cannot be read would be lost
    std::erase_if(*lines, [&](const std::string& line) { return holds(line, name); });
    lines->push_back(name + "=" + escaped(value));
    // Put in the place of the old file whole: a reader never sees half of it.
    UnfinishedFile fresh;
    if (writeLines(fresh.create(*target), *lines)) (void)!fresh.finish();
}

}  // namespace vistel::platform

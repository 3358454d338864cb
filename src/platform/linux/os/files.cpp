#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace vistel::platform {

// Opening a named pipe would wait for its writer, without end: for reading it is opened without
// waiting, and whoever reads it waits for bytes as for those of any pipe (awaitBytes).
static int openWithoutWaiting(const char* name, int flags) {
    const int descriptor = open(name, flags | O_NONBLOCK);
    // Somebody holds a lease on the file, which takes a moment to be given back.
    if (descriptor < 0) return errno == EWOULDBLOCK ? open(name, flags) : -1;
    (void)fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return descriptor;
}

static FILE* openToRead(const char* name) {
    const int descriptor = openWithoutWaiting(name, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    FILE* file = fdopen(descriptor, "r");
    if (!file) close(descriptor);
    return file;
}

FILE* openFile(const std::string& name, const char* mode) {
    // "e": no child process inherits the file.
    FilePtr file(std::string_view(mode) == "r"
                     ? openToRead(name.c_str())
                     : std::fopen(name.c_str(), (std::string(mode) + "e").c_str()));
    if (!file) return nullptr;
    struct stat status {};
    if (fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) {
        file.reset();
        errno = EISDIR;
    }
    return file.release();
}

FILE* createPrivateFile(const std::string& name) {
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) return nullptr;
    FILE* file = fdopen(descriptor, "w");
    if (!file) close(descriptor);
    return file;
}

FILE* openDescriptor(int descriptor, const char* mode) { return fdopen(descriptor, mode); }

static bool closedAtStart[3];

bool wasClosed(int descriptor) { return descriptor <= 2 && closedAtStart[descriptor]; }

void keepStandardStreams() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        closedAtStart[descriptor] = fcntl(descriptor, F_GETFD) < 0 && errno == EBADF;
        // The lowest descriptor that is free is this one.
        if (closedAtStart[descriptor])
            (void)open("/dev/null", descriptor == 0 ? O_RDONLY : O_WRONLY);
    }
}

FILE* duplicateStandardStream(int descriptor, const char* mode) {
    if (wasClosed(descriptor)) {
        errno = EBADF;
        return nullptr;
    }
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    if (copy < 0) return nullptr;
    // Reading and writing is asked for, but a pipe's end or a redirected file has one direction
    // only.
    const int access = fcntl(copy, F_GETFL) & O_ACCMODE;
    if (access == O_RDONLY && std::strchr(mode, '+')) mode = "r";
    if (access == O_WRONLY && std::strchr(mode, '+')) mode = "w";
    FILE* stream = fdopen(copy, mode);
    if (!stream) close(copy);
    return stream;
}

FILE* duplicateStream(FILE* stream) {
    std::fflush(stream);
    const int copy = fcntl(fileno(stream), F_DUPFD_CLOEXEC, 3);
    if (copy < 0) return nullptr;
    const int access = fcntl(copy, F_GETFL) & O_ACCMODE;
    FILE* further = fdopen(copy, access == O_RDONLY ? "r" : access == O_WRONLY ? "w" : "r+");
    if (!further) close(copy);
    return further;
}

StreamStatus streamStatus(FILE* stream) {
    struct stat status {};
    if (!stream || fstat(fileno(stream), &status) != 0) return {};
    if (S_ISREG(status.st_mode)) {
        const int flags = fcntl(fileno(stream), F_GETFL);
        const bool appends = flags >= 0 && (flags & O_APPEND);
        return {StreamKind::regular, static_cast<uint64_t>(status.st_size), appends};
    }
    if (S_ISFIFO(status.st_mode)) return {StreamKind::fifo};
    if (S_ISCHR(status.st_mode)) return {StreamKind::characterDevice};
    return {};
}

static uint64_t nanoseconds(const timespec& time) {
    return static_cast<uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(time.tv_nsec);
}

std::optional<FileStamp> fileStamp(FILE* stream) {
    struct stat status {};
    if (fstat(fileno(stream), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return FileStamp{static_cast<uint64_t>(status.st_size), nanoseconds(status.st_mtim),
                     static_cast<uint64_t>(status.st_ino)};
}

bool modifiedJustNow(const FileStamp& stamp) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    constexpr uint64_t coarsest = 2'500'000'000;
    return stamp.modified + coarsest > nanoseconds(now);
}

bool isRegularFile(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The library has no question for what is left in a stream's buffer, but names its fields.
static size_t bytesBuffered(const FILE* stream) {
    return static_cast<size_t>(stream->_IO_read_end - stream->_IO_read_ptr);
}

// A named pipe that no writer has opened yet has not ended: the system tells the end only of one
// that had a writer since we opened it.
size_t awaitBytes(FILE* stream, unsigned milliseconds) {
    if (const size_t buffered = bytesBuffered(stream)) return buffered;
    pollfd wanted = {fileno(stream), POLLIN, 0};
    const int ready = poll(&wanted, 1, static_cast<int>(milliseconds));
    const bool interrupted = ready < 0 && errno == EINTR;
    return ready == 0 || interrupted ? 0 : 1;
}

size_t readBlockSize() { return 256 << 10; }  // fits the nearer caches, costs few calls

int streamDescriptor(FILE* stream) { return fileno(stream); }

int64_t streamPosition(FILE* stream) { return ftello(stream); }

bool seekStream(FILE* stream, int64_t offset, int origin) {
    return fseeko(stream, static_cast<off_t>(offset), origin) == 0;
}

bool replaceFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0;
}

std::optional<std::string> followLinks(const std::string& name) {
    struct stat status {};
    if (lstat(name.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return name;
    const std::unique_ptr<char, void (*)(void*)> file(realpath(name.c_str(), nullptr), std::free);
    if (!file) return std::nullopt;
    return file.get();
}

bool fileExists(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0;
}

std::vector<std::string> listFolder(const std::string& searchDirectory, const std::string& folder) {
    std::string path = searchDirectory;
    if (!path.empty()) path += '/';
    path += folder;
    if (path.empty()) path.push_back('.');
    std::vector<std::string> names;
    DIR* directory = opendir(path.c_str());
    if (!directory) return names;
    while (const dirent* entry = readdir(directory)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(directory);
    // File systems keep no order of their own here; a fixed one makes runs repeatable.
    std::sort(names.begin(), names.end());
    return names;
}

std::string programPath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return {};
        if (static_cast<size_t>(length) < path.size()) {
            path.resize(static_cast<size_t>(length));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

bool isAbsolutePath(const std::string& name) { return name.starts_with('/'); }

std::string currentDirectory() {
    std::string path(256, '\0');
    while (!getcwd(path.data(), path.size())) {
        if (errno != ERANGE) return {};
        path.resize(path.size() * 2);
    }
    path.resize(std::strlen(path.c_str()));
    return path;
}

bool setCurrentDirectory(const std::string& folder) { return chdir(folder.c_str()) == 0; }

bool isCharacterDevice(int descriptor) {
    if (wasClosed(descriptor)) return false;
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode);
}

bool isTerminal(int descriptor) { return isatty(descriptor) == 1; }

void setBinaryFileMode() {}  // there is no other mode

void setNativeLocale() {
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace vistel::platform

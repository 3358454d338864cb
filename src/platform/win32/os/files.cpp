#include "platform/files.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <thread>

#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

// The run-time library's mode text with the binary flag; "r+" stays a prefix.
std::string binaryMode(const char* mode) { return std::string(mode) + "b"; }

HANDLE handleOf(int descriptor) { return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)); }

// Flags of the run-time library for a mode ("r", "w", "a", each with or without "+"). The stream
// functions of this library have no mode sign of their own on all systems for what no child process
// is to inherit, the descriptors have a flag.
int openFlags(const char* mode) {
    const int access = std::strchr(mode, '+') ? _O_RDWR : mode[0] == 'r' ? _O_RDONLY : _O_WRONLY;
    const int making = mode[0] == 'r'   ? 0
                       : mode[0] == 'w' ? _O_CREAT | _O_TRUNC
                                        : _O_CREAT | _O_APPEND;
    return access | making | _O_BINARY | _O_NOINHERIT;
}

FILE* openStream(const std::string& name, int flags, const char* mode) {
    const int descriptor = _open(name.c_str(), flags, _S_IREAD | _S_IWRITE);
    if (descriptor < 0) return nullptr;
    FILE* file = _fdopen(descriptor, binaryMode(mode).c_str());
    if (!file) _close(descriptor);
    return file;
}

// As _dup, but inherited by no child process; -1 on failure.
int duplicate(int descriptor) {
    const HANDLE self = GetCurrentProcess();
    HANDLE copy = nullptr;
    if (!DuplicateHandle(self, handleOf(descriptor), self, &copy, 0, FALSE,
                         DUPLICATE_SAME_ACCESS)) {
        errno = EBADF;
        return -1;
    }
    const int made = _open_osfhandle(reinterpret_cast<intptr_t>(copy), _O_BINARY | _O_NOINHERIT);
    if (made < 0) CloseHandle(copy);
    return made;
}

bool isFolder(const std::string& name) {
    const DWORD attributes = GetFileAttributesA(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

unsigned modeBits(int descriptor) {
    struct _stat64 status;
    return _fstat64(descriptor, &status) == 0 ? status.st_mode & _S_IFMT : 0;
}

}  // namespace

FILE* openFile(const std::string& name, const char* mode) {
    // The library would say "permission denied" of a folder.
    if (isFolder(name)) {
        errno = EISDIR;
        return nullptr;
    }
    return openStream(name, openFlags(mode), mode);
}

FILE* createPrivateFile(const std::string& name) { return openStream(name, openFlags("w"), "w"); }

FILE* openDescriptor(int descriptor, const char* mode) {
    return _fdopen(descriptor, binaryMode(mode).c_str());
}

static bool closedAtStart[3];

bool wasClosed(int descriptor) { return descriptor <= 2 && closedAtStart[descriptor]; }

void keepStandardStreams() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        closedAtStart[descriptor] = handleOf(descriptor) == INVALID_HANDLE_VALUE;
        // The lowest descriptor that is free is this one.
        if (closedAtStart[descriptor]) _open("NUL", _O_RDWR | _O_BINARY);
    }
}

static bool canBeAsked(HANDLE pipe) {
    return PeekNamedPipe(pipe, nullptr, 0, nullptr, nullptr, nullptr) ||
           GetLastError() == ERROR_BROKEN_PIPE;
}

// Some pipes of other systems do not tell whether they hold anything. A thread of their own waits
// for them and passes on what comes through a pipe that does. It ends with the program, or when one
// of the ends is closed.
static void passOn(int from, int to) {
    char block[1 << 14];
    for (int got; (got = _read(from, block, sizeof block)) > 0;)
        if (_write(to, block, static_cast<unsigned>(got)) != got) break;
    _close(to);
    _close(from);
}

static int passedOn(int descriptor) {
    int ends[2];
    if (_pipe(ends, 1 << 20, _O_BINARY | _O_NOINHERIT) != 0) return descriptor;
    try {
        std::thread(passOn, descriptor, ends[1]).detach();
        return ends[0];
    } catch (const std::system_error&) {
        for (const int end : ends) _close(end);
        return descriptor;
    }
}

FILE* duplicateStandardStream(int descriptor, const char* mode) {
    if (wasClosed(descriptor)) {
        errno = EBADF;
        return nullptr;
    }
    int copy = duplicate(descriptor);
    if (copy < 0) return nullptr;
    const bool reading = descriptor == 0 && modeBits(copy) == _S_IFIFO;
    if (reading && !canBeAsked(handleOf(copy))) copy = passedOn(copy);
    FILE* stream = _fdopen(copy, binaryMode(mode).c_str());
    if (!stream) _close(copy);
    return stream;
}

FILE* duplicateStream(FILE* stream) {
    std::fflush(stream);
    const int copy = duplicate(_fileno(stream));
    if (copy < 0) return nullptr;
    FILE* further = _fdopen(copy, "r+b");
    if (!further) _close(copy);
    return further;
}

StreamStatus streamStatus(FILE* stream) {
    struct _stat64 status;
    if (_fstat64(_fileno(stream), &status) != 0) return {};
    switch (status.st_mode & _S_IFMT) {
        case _S_IFREG:
            return {StreamKind::regular, static_cast<uint64_t>(status.st_size)};
        case _S_IFIFO:
            return {StreamKind::fifo, 0};
        case _S_IFCHR:
            return {StreamKind::characterDevice, 0};
    }
    return {};
}

static uint64_t joined(DWORD high, DWORD low) { return uint64_t{high} << 32 | low; }

std::optional<FileStamp> fileStamp(FILE* stream) {
    if (streamStatus(stream).kind != StreamKind::regular) return {};
    BY_HANDLE_FILE_INFORMATION file;
    if (!GetFileInformationByHandle(handleOf(_fileno(stream)), &file)) return {};
    return FileStamp{
        joined(file.nFileSizeHigh, file.nFileSizeLow),
        joined(file.ftLastWriteTime.dwHighDateTime, file.ftLastWriteTime.dwLowDateTime),
        joined(file.nFileIndexHigh, file.nFileIndexLow)};
}

bool modifiedJustNow(const FileStamp& stamp) {
    FILETIME now;  // in units of 100 nanoseconds
    GetSystemTimeAsFileTime(&now);
    constexpr uint64_t coarsest = 25'000'000;
    return stamp.modified + coarsest > joined(now.dwHighDateTime, now.dwLowDateTime);
}

bool isRegularFile(const std::string& name) {
    struct _stat64 status;
    return _stat64(name.c_str(), &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG;
}

size_t awaitBytes(FILE* stream, unsigned milliseconds) {
    if (stream->_cnt > 0) return static_cast<size_t>(stream->_cnt);
    constexpr std::chrono::milliseconds moment{1};
    const HANDLE pipe = handleOf(_fileno(stream));
    const auto begin = std::chrono::steady_clock::now();
    for (;;) {
        DWORD bytes = 0;
        // What is no pipe cannot be asked, what has been closed at the other end has ended.
        if (!PeekNamedPipe(pipe, nullptr, 0, nullptr, &bytes, nullptr) || bytes > 0) return 1;
        const auto waited = std::chrono::steady_clock::now() - begin;
        if (waited >= std::max(moment, std::chrono::milliseconds(milliseconds))) return 0;
        Sleep(milliseconds > 0 ? 1 : 0);
    }
}

size_t readBlockSize() { return 16 << 10; }

int streamDescriptor(FILE* stream) { return _fileno(stream); }

int64_t streamPosition(FILE* stream) { return _ftelli64(stream); }

bool seekStream(FILE* stream, int64_t offset, int origin) {
    return _fseeki64(stream, offset, origin) == 0;
}

bool replaceFile(const std::string& from, const std::string& to) {
    if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING)) return true;
    errno = GetLastError() == ERROR_FILE_NOT_FOUND ? ENOENT : EACCES;
    return false;
}

std::optional<std::string> followLinks(const std::string& name) {
    const DWORD attributes = GetFileAttributesA(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return name;
    const HANDLE file = CreateFileA(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        errno = error == ERROR_CANT_RESOLVE_FILENAME ? ELOOP
                : error == ERROR_ACCESS_DENIED       ? EACCES
                                                     : ENOENT;
        return std::nullopt;
    }
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetFinalPathNameByHandleA(file, path, MAX_PATH, 0);
    CloseHandle(file);
    if (length > 0 && length < MAX_PATH) return std::string(path, length);
    errno = ENAMETOOLONG;
    return std::nullopt;
}

bool fileExists(const std::string& name) {
    return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string programPath() {
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    return std::string(path, length);
}

// "c:name" counts from the drive's own current folder, which is none of those that we know.
bool isAbsolutePath(const std::string& name) {
    if (name.starts_with('/') || name.starts_with('\\')) return true;
    const char letter = static_cast<char>(name.empty() ? 0 : name[0] | 0x20);
    return name.size() > 1 && name[1] == ':' && letter >= 'a' && letter <= 'z';
}

std::string currentDirectory() {
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetCurrentDirectoryA(MAX_PATH, path);
    return length < MAX_PATH ? std::string(path, length) : std::string();
}

bool setCurrentDirectory(const std::string& folder) {
    return SetCurrentDirectoryA(folder.c_str()) != 0;
}

bool isCharacterDevice(int descriptor) {
    return !wasClosed(descriptor) && modeBits(descriptor) == _S_IFCHR;
}

bool isTerminal(int descriptor) {
    // Every character device passes for a terminal in the run-time library, the null device too.
    if (!isCharacterDevice(descriptor)) return false;
    DWORD mode = 0;
    return GetConsoleMode(handleOf(descriptor), &mode) != 0;
}

void setBinaryFileMode() {
    _fmode = _O_BINARY;
    for (int descriptor = 0; descriptor <= 2; ++descriptor) _setmode(descriptor, _O_BINARY);
}

void setNativeLocale() {
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace vistel::platform

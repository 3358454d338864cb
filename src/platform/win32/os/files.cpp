#include "platform/files.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>

#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

// The run-time library's mode text with the binary flag; "r+" stays a prefix.
std::string binaryMode(const char* mode) { return std::string(mode) + "b"; }

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
    return std::fopen(name.c_str(), binaryMode(mode).c_str());
}

FILE* duplicateStandardStream(int descriptor, const char* mode) {
    const int copy = _dup(descriptor);
    if (copy < 0) return nullptr;
    // The mode text of _fdopen does not reach the descriptor's own text flag.
    _setmode(copy, _O_BINARY);
    FILE* stream = _fdopen(copy, binaryMode(mode).c_str());
    if (!stream) _close(copy);
    return stream;
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
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    if (!GetFileInformationByHandle(handle, &file)) return {};
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

size_t readBlockSize() { return 16 << 10; }

int streamDescriptor(FILE* stream) { return _fileno(stream); }

int64_t streamPosition(FILE* stream) { return _ftelli64(stream); }

bool seekStream(FILE* stream, int64_t offset, int origin) {
    return _fseeki64(stream, offset, origin) == 0;
}

bool fileExists(const std::string& name) {
    return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string programPath() {
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    return std::string(path, length);
}

std::string currentDirectory() {
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetCurrentDirectoryA(MAX_PATH, path);
    return length < MAX_PATH ? std::string(path, length) : std::string();
}

bool setCurrentDirectory(const std::string& folder) {
    return SetCurrentDirectoryA(folder.c_str()) != 0;
}

bool isCharacterDevice(int descriptor) { return modeBits(descriptor) == _S_IFCHR; }

bool isTerminal(int descriptor) {
    // Every character device passes for a terminal in the run-time library, the null device too.
    if (!isCharacterDevice(descriptor)) return false;
    DWORD mode = 0;
    return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
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

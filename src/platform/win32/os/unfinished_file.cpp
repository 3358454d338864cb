// The file is marked to be removed with its last handle, which the system closes however the
// process ends. Only while it is renamed it has neither mark nor place, and while it is copied the
// target is not whole: a console event then waits.
#include "platform/unfinished_file.h"

#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/files.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

constexpr DWORD access = GENERIC_READ | GENERIC_WRITE | DELETE;
// Files beside each other that other programs are at, or could not remove.
constexpr int mostUnfinished = 10000;

std::mutex changing;

// Runs on a thread of the system's own. FALSE hands over to the default handler, which ends the
// process.
BOOL WINAPI waitForChange(DWORD) {
    const std::lock_guard lock(changing);
    return FALSE;
}

// A file that goes with its last handle cannot be opened, only listed.
bool isListed(const std::string& name) {
    WIN32_FIND_DATAA entry;
    const HANDLE list = FindFirstFileA(name.c_str(), &entry);
    if (list == INVALID_HANDLE_VALUE) return false;
    FindClose(list);
    return true;
}

int errorNumber(DWORD error, const std::string& name) {
    if (error == ERROR_FILE_EXISTS || isListed(name)) return EEXIST;
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
                         error == ERROR_INVALID_NAME;
    if (missing) return ENOENT;
    return error == ERROR_DISK_FULL ? ENOSPC : EACCES;
}

void setRemoval(HANDLE file, bool removed) {
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = removed;
    SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof disposition);
}

// A stream on a handle of its own to the same file; null on failure.
FILE* streamOn(HANDLE file, std::vector<char>& buffer) {
    const HANDLE self = GetCurrentProcess();
    HANDLE copy = nullptr;
    if (!DuplicateHandle(self, file, self, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS)) return nullptr;
    const int descriptor =
        _open_osfhandle(reinterpret_cast<intptr_t>(copy), _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) {
        CloseHandle(copy);
        return nullptr;
    }
    FILE* stream = _fdopen(descriptor, "w+b");
    if (!stream) _close(descriptor);
    if (stream) std::setvbuf(stream, buffer.data(), _IOFBF, buffer.size());
    return stream;
}

HANDLE handleOf(intptr_t value) { return reinterpret_cast<HANDLE>(value); }

// A new file of a free name in the folder, which ends in its separator. INVALID_HANDLE_VALUE with
// errno set on failure.
HANDLE createIn(const std::string& folder, std::string& name) {
    for (int number = 0; number < mostUnfinished; ++number) {
        name = folder + "vistel-unfinished-" + std::to_string(number) + ".tmp";
        const HANDLE file = CreateFileA(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) return file;
        errno = errorNumber(GetLastError(), name);
        if (errno != EEXIST) break;
    }
    name.clear();
    return INVALID_HANDLE_VALUE;
}

std::string temporaryFolder() {
    char path[MAX_PATH + 2] = {};
    const DWORD length = GetTempPathA(sizeof path, path);
    return length < sizeof path ? std::string(path, length) : std::string();
}

struct Closer {
    void operator()(void* file) const { CloseHandle(file); }
};
using Handle = std::unique_ptr<void, Closer>;

// The target for writing into it; null when there is none, or with errno set when it may not be
// written.
Handle openTarget(const std::string& target) {
    errno = 0;
    const HANDLE file = CreateFileA(target.c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) return Handle(file);
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_NOT_FOUND) errno = error == ERROR_PATH_NOT_FOUND ? ENOENT : EACCES;
    return {};
}

bool hasSeveralNames(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION status;
    return GetFileInformationByHandle(file, &status) && status.nNumberOfLinks > 1;
}

// Sets the end of the file, which also takes room for what is before it.
bool setSize(HANDLE file, int64_t size) {
    LARGE_INTEGER end;
    end.QuadPart = size;
    if (SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file)) return true;
    errno = GetLastError() == ERROR_DISK_FULL ? ENOSPC : EIO;
    return false;
}

bool copyBytes(HANDLE from, HANDLE to) {
    std::vector<char> block(size_t{1} << 18);
    for (DWORD got = 0, done = 0;;) {
        const bool read = ReadFile(from, block.data(), DWORD(block.size()), &got, nullptr);
        if (read && got == 0) return true;
        if (!read || !WriteFile(to, block.data(), got, &done, nullptr) || done != got) {
            errno = GetLastError() == ERROR_DISK_FULL ? ENOSPC : EIO;
            return false;
        }
    }
}

bool copyInto(HANDLE from, const std::string& target) {
    const Handle to = openTarget(target);
    LARGE_INTEGER whole, old;
    if (!to || !GetFileSizeEx(from, &whole) || !GetFileSizeEx(to.get(), &old)) {
        if (errno == 0) errno = ENOENT;
        return false;
    }
    if (whole.QuadPart > old.QuadPart && !setSize(to.get(), whole.QuadPart)) {
        const int error = errno;
        (void)!setSize(to.get(), old.QuadPart);
        errno = error;
        return false;
    }
    const LARGE_INTEGER start{};
    SetFilePointerEx(from, start, nullptr, FILE_BEGIN);
    SetFilePointerEx(to.get(), start, nullptr, FILE_BEGIN);
    return copyBytes(from, to.get()) && setSize(to.get(), whole.QuadPart) &&
           FlushFileBuffers(to.get());
}

}  // namespace

FILE* UnfinishedFile::create(const std::string& target, Name) {
    const Handle there = openTarget(target);
    if (!there && errno != 0) return nullptr;
    target_ = target;
    copied_ = there && hasSeveralNames(there.get());
    HANDLE file = createIn(target.substr(0, target.find_last_of("/\\:") + 1), name_);
    if (file == INVALID_HANDLE_VALUE && there && errno == EACCES) {
        copied_ = true;
        file = createIn(temporaryFolder(), name_);
    }
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    setRemoval(file, true);
    buffer_.resize(bufferBytes);
    FILE* stream = streamOn(file, buffer_);
    if (!stream) {
        CloseHandle(file);
        name_.clear();
        errno = EMFILE;
        return nullptr;
    }
    SetConsoleCtrlHandler(waitForChange, TRUE);
    handle_ = reinterpret_cast<intptr_t>(file);
    return stream;
}

// There is no such request; what is written is on its way soon.
void UnfinishedFile::beginWriteOut() {}

bool UnfinishedFile::finish() {
    const std::lock_guard lock(changing);
    const HANDLE file = handleOf(handle_);
    if (copied_) return copyInto(file, target_);
    if (!FlushFileBuffers(file)) {
        errno = EIO;
        return false;
    }
    setRemoval(file, false);
    CloseHandle(file);
    handle_ = -1;
    if (!replaceFile(name_, target_)) return false;
    name_.clear();
    SetConsoleCtrlHandler(waitForChange, FALSE);
    return true;
}

UnfinishedFile::~UnfinishedFile() {
    if (name_.empty()) return;
    if (handle_ != -1) CloseHandle(handleOf(handle_));
    DeleteFileA(name_.c_str());  // after a failed replacement, or where files cannot be marked
    SetConsoleCtrlHandler(waitForChange, FALSE);
}

}  // namespace vistel::platform

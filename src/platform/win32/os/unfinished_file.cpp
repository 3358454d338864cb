// The file is marked to be removed with its last handle, which the system closes however the
// process ends. Only while it is renamed it has neither mark nor place: a console event then waits.
#include "platform/unfinished_file.h"

#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <cstdint>
#include <mutex>

#include "platform/files.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

constexpr DWORD access = GENERIC_READ | GENERIC_WRITE | DELETE;

std::mutex renaming;

// Runs on a thread of the system's own. FALSE hands over to the default handler, which ends the
// process.
BOOL WINAPI waitForRenaming(DWORD) {
    const std::lock_guard lock(renaming);
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
FILE* streamOn(HANDLE file) {
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
    return stream;
}

}  // namespace

FILE* UnfinishedFile::create(const std::string& name) {
    const HANDLE file = CreateFileA(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        errno = errorNumber(GetLastError(), name);
        return nullptr;
    }
    setRemoval(file, true);
    FILE* stream = streamOn(file);
    if (!stream) {
        CloseHandle(file);
        errno = EMFILE;
        return nullptr;
    }
    SetConsoleCtrlHandler(waitForRenaming, TRUE);
    name_ = name;
    handle_ = reinterpret_cast<intptr_t>(file);
    return stream;
}

bool UnfinishedFile::replace(const std::string& to) {
    const std::lock_guard lock(renaming);
    const HANDLE file = reinterpret_cast<HANDLE>(handle_);
    setRemoval(file, false);
    CloseHandle(file);
    handle_ = 0;
    if (!replaceFile(name_, to)) return false;
    name_.clear();
    SetConsoleCtrlHandler(waitForRenaming, FALSE);
    return true;
}

UnfinishedFile::~UnfinishedFile() {
    if (name_.empty()) return;
    if (handle_) CloseHandle(reinterpret_cast<HANDLE>(handle_));
    DeleteFileA(name_.c_str());  // after a failed replacement, or where files cannot be marked
    SetConsoleCtrlHandler(waitForRenaming, FALSE);
}

}  // namespace vistel::platform

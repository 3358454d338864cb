// The run-time library's own temporary file lies at the root of the drive, where few users may
// write.
#include "platform/temporary_file.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/win32/windows_api.h"

namespace vistel::platform {

FILE* openTemporaryFile() {
    char folder[MAX_PATH + 1], name[MAX_PATH];
    if (GetTempPathA(sizeof folder, folder) == 0 || GetTempFileNameA(folder, "pix", 0, name) == 0) {
        errno = EACCES;
        return nullptr;
    }
    constexpr int flags = _O_RDWR | _O_CREAT | _O_BINARY | _O_NOINHERIT | _O_TEMPORARY;
    const int descriptor = _open(name, flags, _S_IREAD | _S_IWRITE);
    if (descriptor < 0) {
        DeleteFileA(name);
        return nullptr;
    }
    FILE* file = _fdopen(descriptor, "w+b");
    if (!file) _close(descriptor);
    return file;
}

}  // namespace vistel::platform

#include <cerrno>
#include <cstdio>

#include "platform/files.h"

namespace vistel::platform {

bool finishStandardOutput() {
    errno = 0;
    if (std::fflush(stdout) == 0 && !std::ferror(stdout) && !wasClosed(1)) return true;
    // The reason of an earlier failure is not known any more.
    if (errno == 0) errno = wasClosed(1) ? EBADF : EIO;
    return false;
}

}  // namespace vistel::platform

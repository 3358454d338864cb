#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "platform/files.h"
#include "platform/linux/os/stuck_output.h"
#include "platform/report_reader.h"

namespace vistel::platform {

// Whether a write of up to PIPE_BUF bytes does not have to wait, or fails at once.
static bool takesMore(int descriptor, int milliseconds) {
    pollfd output{descriptor, POLLOUT, 0};
    return poll(&output, 1, milliseconds) > 0;
}

void dropStuckOutput() {
    const int before = errno;
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (const int descriptor : {1, 2})
        if (!takesMore(descriptor, 0)) dup2(nowhere, descriptor);
    close(nowhere);
    errno = before;
}

void writeReport(const std::string& text, const GoOn& goOn) {
    for (size_t at = 0; at < text.size(); at += PIPE_BUF) {
        if (!awaitReportReader([] { return takesMore(1, 1); }, goOn)) dropStuckOutput();
        std::fwrite(text.data() + at, 1, std::min<size_t>(text.size() - at, PIPE_BUF), stdout);
        std::fflush(stdout);
    }
}

void leaveStuckReport(int) {}

}  // namespace vistel::platform

#include "platform/clock.h"

#include <cerrno>
#include <ctime>

namespace vistel::platform {

uint64_t tickMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
}

uint32_t tickMilliseconds() { return static_cast<uint32_t>(tickMicroseconds() / 1000); }

void sleepMilliseconds(unsigned milliseconds) {
    timespec left{static_cast<time_t>(milliseconds / 1000),
                  static_cast<long>(milliseconds % 1000) * 1000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

}  // namespace vistel::platform

#include "platform/thread_priority.h"

#include "platform/win32/windows_api.h"

namespace vistel::platform {

void makeThreadTimeCritical() {
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
}

}  // namespace vistel::platform

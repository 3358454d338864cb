#include "platform/thread_priority.h"

#include <pthread.h>
#include <sched.h>

namespace vistel::platform {

void makeThreadTimeCritical() {
    sched_param lowest{};
    lowest.sched_priority = sched_get_priority_min(SCHED_RR);
    (void)pthread_setschedparam(pthread_self(), SCHED_RR, &lowest);
}

}  // namespace vistel::platform

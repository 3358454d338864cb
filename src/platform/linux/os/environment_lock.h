// The environment may not be read while another thread changes it; starting a program reads it too.
#pragma once

#include <mutex>

namespace vistel::platform {

std::mutex& environmentLock();

}  // namespace vistel::platform

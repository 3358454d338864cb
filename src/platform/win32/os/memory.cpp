#include "platform/memory.h"

#include "platform/win32/windows_api.h"

namespace vistel::platform {

void* reserveMemory(size_t bytes) {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_READWRITE);
}

bool commitMemory(void* start, size_t bytes) {
    if (bytes == 0) return true;
    return VirtualAlloc(start, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

// Large pages there need a privilege that users of a viewer have not got.
size_t efficientSize(size_t bytes) { return bytes; }

void releaseMemory(void* start, size_t) {
    if (start) VirtualFree(start, 0, MEM_RELEASE);
}

size_t physicalMemory() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? static_cast<size_t>(status.ullTotalPhys) : 0;
}

}  // namespace vistel::platform

#include "platform/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace vistel::platform {

static uintptr_t pageSize() {
    static const auto size = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// The pages are mapped without access: the kernel counts them as used memory only when they become
// usable, and gives them a page at a time when they are touched.
void* reserveMemory(size_t bytes) {
    if (bytes == 0) return nullptr;
    void* start = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) return nullptr;
    // A hint: frame planes are large and read in full.
    madvise(start, bytes, MADV_HUGEPAGE);
    return start;
}

bool commitMemory(void* start, size_t bytes) {
    if (bytes == 0) return true;
    const uintptr_t page = pageSize();
    const auto first = reinterpret_cast<uintptr_t>(start) / page * page;
    const uintptr_t end = (reinterpret_cast<uintptr_t>(start) + bytes + page - 1) / page * page;
    return mprotect(reinterpret_cast<void*>(first), end - first, PROT_READ | PROT_WRITE) == 0;
}

void releaseMemory(void* start, size_t bytes) {
    if (start && bytes != 0) munmap(start, bytes);
}

size_t physicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    return pages > 0 ? static_cast<size_t>(pages) * pageSize() : 0;
}

}  // namespace vistel::platform

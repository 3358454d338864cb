#include "platform/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace vistel::platform {

static uintptr_t pageSize() {
    static const auto size = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}

static constexpr size_t largePage = size_t{2} << 20;
static constexpr size_t wasteDivisor = 64;

static size_t roundedUp(size_t bytes, size_t unit) { return (bytes + unit - 1) / unit * unit; }

size_t efficientSize(size_t bytes) {
    if (bytes > SIZE_MAX - largePage) return bytes;
    const size_t large = roundedUp(bytes, largePage);
    return large - bytes <= bytes / wasteDivisor ? large : bytes;
}

// A mapping whose start is a multiple of a large page.
static void* mapAligned(size_t bytes) {
    void* start = mmap(nullptr, bytes + largePage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) return nullptr;
    const auto from = reinterpret_cast<uintptr_t>(start);
    const uintptr_t aligned = roundedUp(from, largePage);
    if (aligned > from) munmap(start, aligned - from);
    munmap(reinterpret_cast<void*>(aligned + bytes), from + largePage - aligned);
    return reinterpret_cast<void*>(aligned);
}

// The pages are mapped without access: the kernel counts them as used memory only when they become
// usable, and gives them when they are touched.
void* reserveMemory(size_t bytes) {
    if (bytes == 0 || bytes > SIZE_MAX / 2) return nullptr;
    const size_t mapped = roundedUp(bytes, pageSize());
    if (mapped < largePage) {
        void* start = mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return start == MAP_FAILED ? nullptr : start;
    }
    void* start = mapAligned(mapped);
    if (start) madvise(start, mapped, MADV_HUGEPAGE);  // a hint
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

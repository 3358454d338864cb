// Large zero-filled memory that costs nothing until it is used. win32 and linux implement all of
// this each; there is no headless one.
#pragma once

#include <cstddef>

namespace vistel::platform {

// Address space for `bytes` zero bytes, on large pages where the system has them; null when there
// is none. Only the parts made usable with commitMemory may be touched.
[[nodiscard]] void* reserveMemory(size_t bytes);

// Makes [start, start + bytes) of a reservation usable. Committing twice is harmless and keeps the
// contents. False when the system has no memory left.
[[nodiscard]] bool commitMemory(void* start, size_t bytes);

// Of a block of at least `bytes` bytes that will be read and written in full: the size to ask for.
// Larger where the system then uses its large pages to the end, by at most 1/64.
size_t efficientSize(size_t bytes);

void releaseMemory(void* start, size_t bytes);

// Bytes of physical memory of this machine; 0 when unknown.
size_t physicalMemory();

}  // namespace vistel::platform

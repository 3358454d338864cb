// Memory of frame planes that were given back, kept for the next plane of the same size: a page
// that was touched once costs nothing the second time, and the decoder may write past the cache
// into it. Thread-safe.
#pragma once

#include <cstddef>

namespace vistel {

struct PlaneMemory {
    void* start = nullptr;  // null: none
    // True: all of it is usable and holds what was left there. False: reserved only, nothing is
    // usable, zero once it is.
    bool touched = false;
};

// Memory of exactly `bytes` bytes, used before if there is such.
[[nodiscard]] PlaneMemory takePlaneMemory(size_t bytes);

// Takes it back. What was touched completely may be kept, up to planePoolLimit bytes in all (the
// oldest goes first); the rest goes to the system.
void givePlaneMemory(PlaneMemory memory, size_t bytes);

constexpr size_t planePoolLimit = size_t{128} << 20;

// Gives everything that is kept to the system, for tests that begin without.
void emptyPlanePool();

}  // namespace vistel

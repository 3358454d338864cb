// What the viewer asks of memory and of files, counted; and memory that runs out on purpose. The
// program's operator new counts, and it is linked so that calls of the platform layer pass through
// here (see CMakeLists.txt).
#pragma once

#include <cstddef>

namespace vistel::test {

size_t allocations();   // by operator new and of memory pages, so far
size_t fileAccesses();  // files opened, looked for, asked about or moved in, so far

enum class MemoryKind { heap, pages };

// While it lives there is none of one kind of memory: no operator new of `least` bytes and more
// succeeds, or no page is to be had. One at a time.
class NoMemory {
 public:
    explicit NoMemory(MemoryKind kind, size_t least = 0);
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
    bool happened() const;  // something was refused
};

}  // namespace vistel::test

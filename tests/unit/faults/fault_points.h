// Faults on purpose: the n-th allocation, page, read, write or seek fails. The program is linked so
// that its calls pass through here (see CMakeLists.txt); nothing of the code under test is changed.
#pragma once

#include <cstddef>

namespace vistel::test {

enum FaultKind : unsigned {
    faultMemory = 0x1,  // malloc, realloc, calloc, operator new
    faultPages = 0x2,   // reserveMemory, commitMemory
    faultRead = 0x4,    // fread, fgetc; ferror then tells it
    faultWrite = 0x8,   // fwrite, fflush, fclose
    faultSeek = 0x10,   // seekStream
    faultOpen = 0x20,   // openFile
};

enum class FaultSpan { once, fromThenOn };

// While it lives, the n-th call (from 1) of one of these kinds fails. One at a time.
class Fault {
 public:
    Fault(unsigned kinds, int n, FaultSpan span = FaultSpan::once);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
    bool happened() const;
};

// While it lives, what is allocated is counted. One at a time.
class AllocationCount {
 public:
    AllocationCount();
    ~AllocationCount();
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;
    size_t blocks() const;          // allocated since then and not yet freed
    size_t reservations() const;    // the same for reserveMemory
    size_t streams() const;         // opened by openFile and not yet closed
    size_t requestedBytes() const;  // in all since then, freed or not
    size_t peakPages() const;       // most bytes of memory pages in use at a time
};

// While it lives, every stream looks like a pipe: it cannot seek.
class PipesOnly {
 public:
    PipesOnly();
    ~PipesOnly();
    PipesOnly(const PipesOnly&) = delete;
    PipesOnly& operator=(const PipesOnly&) = delete;
};

}  // namespace vistel::test

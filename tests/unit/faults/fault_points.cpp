#include "faults/fault_points.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "platform/files.h"

// The linker's names: a call of NAME arrives at __wrap_NAME, __real_NAME is the function itself.
// Functions of the platform layer have their names as the compiler writes them.
extern "C" {
void* __real_malloc(size_t bytes);
void* __real_calloc(size_t count, size_t bytes);
void* __real_realloc(void* block, size_t bytes);
void __real_free(void* block);
size_t __real_fread(void* to, size_t size, size_t count, FILE* stream);
int __real_fgetc(FILE* stream);
int __real_ferror(FILE* stream);
size_t __real_fwrite(const void* from, size_t size, size_t count, FILE* stream);
int __real_fflush(FILE* stream);
int __real_fclose(FILE* stream);

void* __wrap_malloc(size_t bytes);
void* __wrap_calloc(size_t count, size_t bytes);
void* __wrap_realloc(void* block, size_t bytes);
void __wrap_free(void* block);
size_t __wrap_fread(void* to, size_t size, size_t count, FILE* stream);
int __wrap_fgetc(FILE* stream);
int __wrap_ferror(FILE* stream);
size_t __wrap_fwrite(const void* from, size_t size, size_t count, FILE* stream);
int __wrap_fflush(FILE* stream);
int __wrap_fclose(FILE* stream);
}

namespace vistel::test {

void* realReserve(size_t) asm("__real_" VISTEL_RESERVE_MEMORY);
bool realCommit(void*, size_t) asm("__real_" VISTEL_COMMIT_MEMORY);
void realRelease(void*, size_t) asm("__real_" VISTEL_RELEASE_MEMORY);
bool realSeek(FILE*, int64_t, int) asm("__real_" VISTEL_SEEK_STREAM);
platform::StreamStatus realStatus(FILE*) asm("__real_" VISTEL_STREAM_STATUS);
FILE* realOpen(const std::string&, const char*) asm("__real_" VISTEL_OPEN_FILE);

void* wrapReserve(size_t) asm("__wrap_" VISTEL_RESERVE_MEMORY);
bool wrapCommit(void*, size_t) asm("__wrap_" VISTEL_COMMIT_MEMORY);
void wrapRelease(void*, size_t) asm("__wrap_" VISTEL_RELEASE_MEMORY);
bool wrapSeek(FILE*, int64_t, int) asm("__wrap_" VISTEL_SEEK_STREAM);
platform::StreamStatus wrapStatus(FILE*) asm("__wrap_" VISTEL_STREAM_STATUS);
FILE* wrapOpen(const std::string&, const char*) asm("__wrap_" VISTEL_OPEN_FILE);

namespace {

// A set of blocks; it never allocates.
class BlockTable {
 public:
    void clear() {
        std::fill(std::begin(slots_), std::end(slots_), nullptr);
        count_ = 0;
    }
    void add(void* block) {
        void*& slot = find(block);
        if (slot || count_ == size / 2) return;
        slot = block;
        ++count_;
    }
    void remove(void* block) {
        void** slot = &find(block);
        if (!*slot) return;
        *slot = nullptr;
        --count_;
        for (size_t at = static_cast<size_t>(slot - slots_) + 1; slots_[at % size]; ++at) {
            // Those behind it may belong before it.
            void* const moved = std::exchange(slots_[at % size], nullptr);
            find(moved) = moved;
        }
    }
    size_t count() const { return count_; }

 private:
    static constexpr size_t size = 1 << 14;
    void*& find(void* block) {
        size_t at = (reinterpret_cast<uintptr_t>(block) >> 4) * 0x9E3779B97F4A7C15u % size;
        while (slots_[at] && slots_[at] != block) at = (at + 1) % size;
        return slots_[at];
    }
    void* slots_[size] = {};
    size_t count_ = 0;
};

// Ready before anything else runs, which a mutex is not everywhere.
class Lock {
 public:
    void lock() {
        while (flag_.test_and_set(std::memory_order_acquire)) {
        }
    }
    void unlock() { flag_.clear(std::memory_order_release); }

 private:
    std::atomic_flag flag_;
};

struct State {
    Lock lock;
    unsigned kinds = 0;
    int callsLeft = 0;
    FaultSpan span = FaultSpan::once;
    bool happened = false;
    bool counting = false, pipesOnly = false;
    BlockTable blocks, reservations, streams;
    size_t requestedBytes = 0, pages = 0, peakPages = 0;
};
constinit State state;

bool failsNow(FaultKind kind) {
    if (!(state.kinds & kind)) return false;
    const std::lock_guard guard(state.lock);
    if (state.callsLeft > 0) --state.callsLeft;
    if (state.callsLeft > 0 || (state.happened && state.span == FaultSpan::once)) return false;
    state.happened = true;
    return true;
}

void remember(BlockTable& table, void* block, size_t bytes = 0) {
    if (!state.counting || !block) return;
    const std::lock_guard guard(state.lock);
    table.add(block);
    state.requestedBytes += bytes;
}

void forget(BlockTable& table, void* block) {
    if (!state.counting || !block) return;
    const std::lock_guard guard(state.lock);
    table.remove(block);
}

void* counted(void* block, size_t bytes) {
    remember(state.blocks, block, bytes);
    return block;
}

void* noMemory() {
    errno = ENOMEM;
    return nullptr;
}

void throwOne() {
    try {
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
    }
}

// The first exception makes what all others need, and so does the first for which there is no
// memory: the lock of the reserve from which such exceptions are taken.
void throwFirstOnes() {
    static bool done = false;
    if (std::exchange(done, true)) return;
    throwOne();
    const Fault fault(faultMemory, 1);
    throwOne();
}

}  // namespace

Fault::Fault(unsigned kinds, int n, FaultSpan span) {
    state.callsLeft = n;
    state.span = span;
    state.happened = false;
    state.kinds = kinds;
}
Fault::~Fault() { state.kinds = 0; }
bool Fault::happened() const { return state.happened; }

AllocationCount::AllocationCount() {
    throwFirstOnes();
    for (BlockTable* table : {&state.blocks, &state.reservations, &state.streams}) table->clear();
    state.requestedBytes = state.pages = state.peakPages = 0;
    state.counting = true;
}
AllocationCount::~AllocationCount() { state.counting = false; }
size_t AllocationCount::blocks() const { return state.blocks.count(); }
size_t AllocationCount::reservations() const { return state.reservations.count(); }
size_t AllocationCount::streams() const { return state.streams.count(); }
size_t AllocationCount::requestedBytes() const { return state.requestedBytes; }
size_t AllocationCount::peakPages() const { return state.peakPages; }

PipesOnly::PipesOnly() { state.pipesOnly = true; }
PipesOnly::~PipesOnly() { state.pipesOnly = false; }

// --- the platform layer --------------------------------------------------------------------------

void* wrapReserve(size_t bytes) {
    if (failsNow(faultPages)) return nullptr;
    void* start = realReserve(bytes);
    remember(state.reservations, start);
    return start;
}

// Counted as if every commitment were of pages that were not usable before.
bool wrapCommit(void* start, size_t bytes) {
    if (failsNow(faultPages) || !realCommit(start, bytes)) return false;
    const std::lock_guard guard(state.lock);
    state.pages += bytes;
    state.peakPages = std::max(state.peakPages, state.pages);
    return true;
}

void wrapRelease(void* start, size_t bytes) {
    realRelease(start, bytes);
    forget(state.reservations, start);
    const std::lock_guard guard(state.lock);
    state.pages -= std::min(bytes, state.pages);
}

bool wrapSeek(FILE* stream, int64_t offset, int origin) {
    return !failsNow(faultSeek) && realSeek(stream, offset, origin);
}

platform::StreamStatus wrapStatus(FILE* stream) {
    if (state.pipesOnly) return {platform::StreamKind::fifo};
    return realStatus(stream);
}

FILE* wrapOpen(const std::string& name, const char* mode) {
    if (failsNow(faultOpen)) {
        errno = EMFILE;
        return nullptr;
    }
    FILE* stream = realOpen(name, mode);
    remember(state.streams, stream);
    return stream;
}

}  // namespace vistel::test

// --- the run-time library ------------------------------------------------------------------------

using namespace vistel::test;

void* __wrap_malloc(size_t bytes) {
    return failsNow(faultMemory) ? noMemory() : counted(__real_malloc(bytes), bytes);
}
void* __wrap_calloc(size_t count, size_t bytes) {
    return failsNow(faultMemory) ? noMemory() : counted(__real_calloc(count, bytes), count * bytes);
}
void* __wrap_realloc(void* block, size_t bytes) {
    if (failsNow(faultMemory)) return noMemory();
    void* grown = __real_realloc(block, bytes);
    if (!grown) return nullptr;
    forget(state.blocks, block);
    return counted(grown, bytes);
}
void __wrap_free(void* block) {
    forget(state.blocks, block);
    __real_free(block);
}

size_t __wrap_fread(void* to, size_t size, size_t count, FILE* stream) {
    if (!failsNow(faultRead)) return __real_fread(to, size, count, stream);
    errno = EIO;
    return 0;
}
int __wrap_fgetc(FILE* stream) {
    if (!failsNow(faultRead)) return __real_fgetc(stream);
    errno = EIO;
    return EOF;
}
// What the stream itself does not know.
int __wrap_ferror(FILE* stream) {
    if (state.happened && (state.kinds & (faultRead | faultWrite))) return 1;
    return __real_ferror(stream);
}
size_t __wrap_fwrite(const void* from, size_t size, size_t count, FILE* stream) {
    if (!failsNow(faultWrite)) return __real_fwrite(from, size, count, stream);
    errno = ENOSPC;
    return 0;
}
int __wrap_fflush(FILE* stream) {
    if (!failsNow(faultWrite)) return __real_fflush(stream);
    errno = ENOSPC;
    return EOF;
}
int __wrap_fclose(FILE* stream) {
    const bool fails = failsNow(faultWrite);
    forget(state.streams, stream);
    const int result = __real_fclose(stream);
    if (!fails) return result;
    errno = ENOSPC;
    return EOF;
}

void* operator new(size_t bytes) {
    if (void* block = std::malloc(std::max<size_t>(bytes, 1))) return block;
    throw std::bad_alloc();
}
void* operator new[](size_t bytes) { return operator new(bytes); }
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(std::max<size_t>(bytes, 1));
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(std::max<size_t>(bytes, 1));
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

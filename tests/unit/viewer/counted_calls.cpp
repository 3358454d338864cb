#include "viewer/counted_calls.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vistel::test {

namespace {

std::atomic<size_t> allocated, accesses;

struct Refused {
    bool heap = false, pages = false;
    size_t least = 0;
    bool happened = false;
} refused;

bool refuse(bool wanted) {
    if (wanted) refused.happened = true;
    return wanted;
}

}  // namespace

size_t allocations() { return allocated; }
size_t fileAccesses() { return accesses; }

NoMemory::NoMemory(MemoryKind kind, size_t least) {
    refused = {kind == MemoryKind::heap, kind == MemoryKind::pages, least, false};
}
NoMemory::~NoMemory() { refused = {}; }
bool NoMemory::happened() const { return refused.happened; }

static void* countedMemory(size_t bytes) {
    ++allocated;
    if (refuse(refused.heap && bytes >= refused.least)) return nullptr;
    return std::malloc(bytes ? bytes : 1);
}
// g++ 12 takes std::free for the wrong partner of the operators below: it looks through them.
[[gnu::noinline]] static void freeCounted(void* memory) { std::free(memory); }

// --- the platform layer --------------------------------------------------------------------------

// The linker's names: a call of NAME arrives at __wrap_NAME, __real_NAME is the function itself.
void* realReserve(size_t) asm("__real_" VISTEL_RESERVE_MEMORY);
FILE* realOpen(const std::string&, const char*) asm("__real_" VISTEL_OPEN_FILE);
bool realExists(const std::string&) asm("__real_" VISTEL_FILE_EXISTS);
bool realIsRegular(const std::string&) asm("__real_" VISTEL_IS_REGULAR_FILE);
std::optional<platform::FileStamp> realStamp(FILE*) asm("__real_" VISTEL_FILE_STAMP);
std::vector<std::string> realList(const std::string&,
                                  const std::string&) asm("__real_" VISTEL_LIST_FOLDER);
platform::StreamStatus realStatus(FILE*) asm("__real_" VISTEL_STREAM_STATUS);
bool realSeek(FILE*, int64_t, int) asm("__real_" VISTEL_SEEK_STREAM);
int64_t realPosition(FILE*) asm("__real_" VISTEL_STREAM_POSITION);

void* wrapReserve(size_t) asm("__wrap_" VISTEL_RESERVE_MEMORY);
FILE* wrapOpen(const std::string&, const char*) asm("__wrap_" VISTEL_OPEN_FILE);
bool wrapExists(const std::string&) asm("__wrap_" VISTEL_FILE_EXISTS);
bool wrapIsRegular(const std::string&) asm("__wrap_" VISTEL_IS_REGULAR_FILE);
std::optional<platform::FileStamp> wrapStamp(FILE*) asm("__wrap_" VISTEL_FILE_STAMP);
std::vector<std::string> wrapList(const std::string&,
                                  const std::string&) asm("__wrap_" VISTEL_LIST_FOLDER);
platform::StreamStatus wrapStatus(FILE*) asm("__wrap_" VISTEL_STREAM_STATUS);
bool wrapSeek(FILE*, int64_t, int) asm("__wrap_" VISTEL_SEEK_STREAM);
int64_t wrapPosition(FILE*) asm("__wrap_" VISTEL_STREAM_POSITION);

void* wrapReserve(size_t bytes) {
    ++allocated;
    return refuse(refused.pages) ? nullptr : realReserve(bytes);
}
FILE* wrapOpen(const std::string& name, const char* mode) {
    ++accesses;
    return realOpen(name, mode);
}
bool wrapExists(const std::string& name) {
    ++accesses;
    return realExists(name);
}
bool wrapIsRegular(const std::string& name) {
    ++accesses;
    return realIsRegular(name);
}
std::optional<platform::FileStamp> wrapStamp(FILE* stream) {
    ++accesses;
    return realStamp(stream);
}
std::vector<std::string> wrapList(const std::string& searched, const std::string& folder) {
    ++accesses;
    return realList(searched, folder);
}
platform::StreamStatus wrapStatus(FILE* stream) {
    ++accesses;
    return realStatus(stream);
}
bool wrapSeek(FILE* stream, int64_t offset, int origin) {
    ++accesses;
    return realSeek(stream, offset, origin);
}
int64_t wrapPosition(FILE* stream) {
    ++accesses;
    return realPosition(stream);
}

}  // namespace vistel::test

using namespace vistel::test;

void* operator new(std::size_t bytes) {
    if (void* memory = countedMemory(bytes)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return countedMemory(bytes);
}
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept {
    return operator new(bytes, tag);
}
void operator delete(void* memory) noexcept { freeCounted(memory); }
void operator delete(void* memory, std::size_t) noexcept { freeCounted(memory); }
void operator delete[](void* memory) noexcept { freeCounted(memory); }
void operator delete[](void* memory, std::size_t) noexcept { freeCounted(memory); }

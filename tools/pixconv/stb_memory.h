// The memory that the stb libraries take. While a StbMemory lives, every block comes from it: there
// is a ceiling, and what has not been freed when it ends is freed then, so that a reading may be
// left in its midst. One at a time; without one, blocks are plain ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

class StbMemory {
 public:
    explicit StbMemory(uint64_t mostBytes);
    ~StbMemory();
    StbMemory(const StbMemory&) = delete;
    StbMemory& operator=(const StbMemory&) = delete;

    void setMost(uint64_t mostBytes) { most_ = mostBytes; }
    // Whether a block was refused because of the ceiling or by the system.
    bool refused() const { return refused_; }

    struct Block;
    void* take(size_t bytes);
    void giveBack(Block* block);

 private:
    Block* first_ = nullptr;
    uint64_t most_, taken_ = 0;
    bool refused_ = false;
};

// As malloc, realloc and free.
void* stbAllocate(size_t bytes);
void* stbReallocate(void* block, size_t bytes);
void stbFree(void* block);

}  // namespace vistel

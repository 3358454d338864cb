#include "stb_memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vistel {

// Stands before the bytes of each block, which stay aligned as malloc's are.
struct alignas(16) StbMemory::Block {
    StbMemory* owner;  // null: a plain one
    Block *before, *after;
    size_t bytes;
    void* content() { return this + 1; }
};

namespace {

thread_local StbMemory* current = nullptr;

StbMemory::Block* blockOf(void* content) { return static_cast<StbMemory::Block*>(content) - 1; }

StbMemory::Block* plainBlock(size_t bytes) {
    if (bytes > SIZE_MAX - sizeof(StbMemory::Block)) return nullptr;
    auto* block = static_cast<StbMemory::Block*>(std::malloc(sizeof(StbMemory::Block) + bytes));
    if (block) *block = {nullptr, nullptr, nullptr, bytes};
    return block;
}

}  // namespace

StbMemory::StbMemory(uint64_t mostBytes) : most_(mostBytes) { current = this; }

StbMemory::~StbMemory() {
    while (first_) giveBack(first_);
    current = nullptr;
}

void* StbMemory::take(size_t bytes) {
    Block* block = bytes <= most_ - std::min(most_, taken_) ? plainBlock(bytes) : nullptr;
    if (!block) {
        refused_ = true;
        return nullptr;
    }
    block->owner = this;
    block->after = first_;
    if (first_) first_->before = block;
    first_ = block;
    taken_ += bytes;
    return block->content();
}

void StbMemory::giveBack(Block* block) {
    (block->before ? block->before->after : first_) = block->after;
    if (block->after) block->after->before = block->before;
    taken_ -= block->bytes;
    std::free(block);
}

void* stbAllocate(size_t bytes) {
    if (current) return current->take(bytes);
    StbMemory::Block* block = plainBlock(bytes);
    return block ? block->content() : nullptr;
}

void stbFree(void* content) {
    if (!content) return;
    StbMemory::Block* block = blockOf(content);
    if (block->owner)
        block->owner->giveBack(block);
    else
        std::free(block);
}

void* stbReallocate(void* content, size_t bytes) {
    void* larger = stbAllocate(bytes);
    if (!larger || !content) return larger;
    std::memcpy(larger, content, std::min(bytes, blockOf(content)->bytes));
    stbFree(content);
    return larger;
}

}  // namespace vistel

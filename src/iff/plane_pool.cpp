#include "iff/plane_pool.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "platform/memory.h"

namespace vistel {

namespace {

struct KeptBlock {
    void* start = nullptr;
    size_t bytes = 0;
};

// Oldest first. A handful is enough: planes of one size come and go one or two at a time.
struct Pool {
    std::mutex mutex;
    std::array<KeptBlock, 16> blocks;
    size_t count = 0;
    size_t bytes = 0;

    KeptBlock remove(size_t index) {
        const KeptBlock block = blocks[index];
        std::move(blocks.begin() + index + 1, blocks.begin() + count, blocks.begin() + index);
        --count;
        bytes -= block.bytes;
        return block;
    }
};

Pool& pool() {
    static Pool& theOne = *new Pool;  // planes of static objects are freed at the very end
    return theOne;
}

}  // namespace

PlaneMemory takePlaneMemory(size_t bytes) {
    {
        Pool& kept = pool();
        const std::lock_guard lock(kept.mutex);
        for (size_t i = kept.count; i-- > 0;)
            if (kept.blocks[i].bytes == bytes) return {kept.remove(i).start, true};
    }
    return {platform::reserveMemory(bytes), false};
}

void givePlaneMemory(PlaneMemory memory, size_t bytes) {
    if (!memory.start) return;
    if (!memory.touched || bytes > planePoolLimit) {
        platform::releaseMemory(memory.start, bytes);
        return;
    }
    Pool& kept = pool();
    const std::lock_guard lock(kept.mutex);
    while (kept.count == kept.blocks.size() || kept.bytes + bytes > planePoolLimit) {
        const KeptBlock oldest = kept.remove(0);
        platform::releaseMemory(oldest.start, oldest.bytes);
    }
    kept.blocks[kept.count++] = {memory.start, bytes};
    kept.bytes += bytes;
}

void emptyPlanePool() {
    Pool& kept = pool();
    const std::lock_guard lock(kept.mutex);
    while (kept.count > 0) {
        const KeptBlock oldest = kept.remove(0);
        platform::releaseMemory(oldest.start, oldest.bytes);
    }
}

}  // namespace vistel

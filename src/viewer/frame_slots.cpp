#include "viewer/frame_slots.h"

#include <charconv>
#include <string>
#include <utility>

#include "platform/memory.h"
#include "platform/process.h"

namespace vistel {

static size_t chooseLimit() {
    const std::string text = platform::environmentVariable("VISTEL_MEMORY").value_or("");
    size_t megabytes = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), megabytes);
    if (read.ec == std::errc{} && megabytes <= SIZE_MAX >> 20) return megabytes << 20;
    const size_t machine = platform::physicalMemory();
    return machine == 0 ? SIZE_MAX : machine / 4 * 3;
}

size_t frameMemoryLimit() {
    static const size_t limit = chooseLimit();
    return limit;
}

bool FrameSlots::hasRoomFor(int32_t frame, const FrameStore& store) const {
    const auto slot = slots_.find(frame);
    const size_t replaced = slot == slots_.end() ? 0 : slot->second.memoryBytes();
    return bytes_ - replaced + store.memoryBytes() <= limit_;
}

FrameStore& FrameSlots::keep(int32_t frame, FrameStore&& store) {
    FrameStore& slot = slots_[frame];
    bytes_ = bytes_ - slot.memoryBytes() + store.memoryBytes();
    slot = std::move(store);
    return slot;
}

void FrameSlots::drop(int32_t frame) {
    const auto slot = slots_.find(frame);
    if (slot == slots_.end()) return;
    bytes_ -= slot->second.memoryBytes();
    slots_.erase(slot);
}

void FrameSlots::clear() {
    slots_.clear();
    bytes_ = 0;
}

}  // namespace vistel

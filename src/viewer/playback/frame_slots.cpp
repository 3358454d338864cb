#include "viewer/playback/frame_slots.h"

#include <utility>

#include "host/environment_number.h"
#include "platform/memory.h"

namespace vistel {

// What is taken for the memory of a machine that does not tell.
static constexpr size_t assumedMemory = size_t{2} << 30;

static constexpr size_t mostMegabytes = size_t{1} << 30;  // more than any machine has

size_t usualFrameMegabytes(size_t machine) {
    return ((machine ? machine : assumedMemory) / 4 * 3) >> 20;
}

size_t readFrameMemoryLimit() {
    const NumberVariable variable{"VISTEL_MEMORY", 0, mostMegabytes, Message::rVTMegabytes};
    return environmentNumber(variable, usualFrameMegabytes(platform::physicalMemory())) << 20;
}

size_t FrameSlots::limit() const {
    if (limit_) return *limit_;
    static const size_t own = readFrameMemoryLimit();
    return own;
}

bool FrameSlots::hasRoomFor(int32_t frame, const FrameStore& store) const {
    const auto slot = slots_.find(frame);
    const size_t replaced = slot == slots_.end() ? 0 : slot->second.memoryBytes();
    return bytes_ - replaced + store.memoryBytes() <= limit();
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

#include "viewer/playback/frame_slots.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>

#include "host/messages.h"
#include "platform/memory.h"
#include "platform/process.h"

namespace vistel {

// What is taken for the memory of a machine that does not tell.
static constexpr size_t assumedMemory = size_t{2} << 30;

MemoryLimit memoryLimit(const std::string& text, size_t machine) {
    const size_t usual = (machine ? machine : assumedMemory) / 4 * 3;
    if (text.empty()) return {usual, true};
    const char* const end = text.data() + text.size();
    size_t megabytes = 0;
    const auto read = std::from_chars(text.data(), end, megabytes);
    const bool number = read.ec == std::errc{} && read.ptr == end && megabytes <= SIZE_MAX >> 20;
    return number ? MemoryLimit{megabytes << 20, true} : MemoryLimit{usual, false};
}

size_t readFrameMemoryLimit() {
    const std::string text = platform::environmentVariable("VISTEL_MEMORY").value_or("");
    const MemoryLimit limit = memoryLimit(text, platform::physicalMemory());
    if (limit.understood) return limit.bytes;
    const auto megabytes = static_cast<int>(std::min<size_t>(limit.bytes >> 20, INT32_MAX));
    const Tstring line = formatMessage("s_VistelStrings.rVTMemoryNotANumber", {text, megabytes});
    std::fprintf(stderr, "%s\n", line.c_str());
    return limit.bytes;
}

size_t FrameSlots::ownLimit() {
    static const size_t limit = readFrameMemoryLimit();
    return limit;
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

// The frames that stay in memory while they are being viewed, one slot per frame number.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "iff/frame_store.h"

namespace vistel {

class FrameSlots {
 public:
    // The frame's planes, null when its slot is empty.
    FrameStore* find(int32_t frame) {
        const auto slot = slots_.find(frame);
        return slot != slots_.end() && slot->second.hasPicture() ? &slot->second : nullptr;
    }
    // Moves the planes into the frame's slot, in place of what was there.
    FrameStore& keep(int32_t frame, FrameStore&& store) { return slots_[frame] = std::move(store); }
    size_t count() const { return slots_.size(); }
    void clear() { slots_.clear(); }

 private:
    std::unordered_map<int32_t, FrameStore> slots_;  // only frames that were read have an entry
};

}  // namespace vistel

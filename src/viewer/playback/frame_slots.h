// The frames that stay in memory while they are being viewed, one slot per frame number, up to a
// limit. Frames beyond it are read from their files whenever they are shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>

#include "iff/frame_store.h"

namespace vistel {

// Megabytes of planes that a machine with so many bytes of memory (0: unknown) keeps unless it is
// told another number: three quarters of its memory.
size_t usualFrameMegabytes(size_t machine);

// Bytes of planes that may be kept: as many megabytes as the environment variable VISTEL_MEMORY
// says, else the usual ones of this machine. Says so on standard error when the variable is no such
// number.
size_t readFrameMemoryLimit();

class FrameSlots {
 public:
    // The frame's planes, null when its slot is empty.
    FrameStore* find(int32_t frame) {
        const auto slot = slots_.find(frame);
        return slot != slots_.end() && slot->second.hasPicture() ? &slot->second : nullptr;
    }
    // Whether a frame of these planes may be kept in the slot, in place of what is there.
    bool hasRoomFor(int32_t frame, const FrameStore& store) const;
    // Moves the planes into the frame's slot, in place of what was there.
    FrameStore& keep(int32_t frame, FrameStore&& store);
    // Empties the frame's slot.
    void drop(int32_t frame);
    // Empties every slot whose planes are unwanted.
    template <class Predicate>
    void dropWhere(Predicate unwanted) {
        std::erase_if(slots_, [&](const auto& slot) {
            const bool dropped = unwanted(slot.second);
            if (dropped) bytes_ -= slot.second.memoryBytes();
            return dropped;
        });
    }
    // Bytes of all planes together; readFrameMemoryLimit's unless another was set.
    size_t limit() const;
    void setLimit(size_t bytes) { limit_ = bytes; }  // for tests
    size_t count() const { return slots_.size(); }
    void clear();

 private:
    std::unordered_map<int32_t, FrameStore> slots_;  // only frames that were read have an entry
    size_t bytes_ = 0;
    std::optional<size_t> limit_;
};

}  // namespace vistel

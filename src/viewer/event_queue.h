// The ring of input events between the window and the viewer loop. Not locked: only the window's
// own thread posts and reads.
#pragma once

#include <array>

#include "platform/input_event.h"

namespace vistel {

class EventQueue {
 public:
    static constexpr int ringSize = 50;  // holds at most ringSize - 1 events

    // Adds an event at the tail and returns its place in the ring.
    // - EV_REDRAW is added once only: a second one returns the place of the first.
    // - EV_QUIT empties the queue before it is added, so it is never lost.
    // - In a full queue the event is dropped and ringSize - 1 is returned.
    int post(int32_t code, uint16_t value);

    bool empty() const { return head_ == tail_; }
    int count() const { return (tail_ - head_ + ringSize) % ringSize; }
    // The oldest event; only when not empty.
    const InputEvent& front() const { return ring_[head_]; }
    InputEvent take();
    void clear() { head_ = tail_ = 0; }

    // Whether an event for which `wanted` is true is queued.
    template <class Predicate>
    bool any(Predicate wanted) const {
        for (int i = head_; i != tail_; i = (i + 1) % ringSize) {
            if (wanted(ring_[i])) return true;
        }
        return false;
    }

    // Drops every queued event for which `unwanted` is true.
    template <class Predicate>
    void drop(Predicate unwanted) {
        EventQueue kept;
        while (!empty()) {
            const InputEvent event = take();
            if (!unwanted(event)) kept.post(event.code, event.value);
        }
        *this = kept;
    }

 private:
    int find(int32_t code) const;  // place in the ring, -1 when absent

    std::array<InputEvent, ringSize> ring_{};
    int head_ = 0, tail_ = 0;
};

}  // namespace vistel

// The ring of input events between the window and the viewer loop. Not locked: only the window's
// own thread posts and reads.
#pragma once

#include <array>

#include "platform/input_event.h"

namespace vistel {

constexpr bool isButton(int32_t code) {
    return code == EV_LEFTMOUSE || code == EV_RIGHTMOUSE || code == EV_MIDDLEMOUSE;
}

// A move comes as two events, the column first.
constexpr bool isMove(int32_t code) { return code == EV_MOUSEX || code == EV_MOUSEY; }

class EventQueue {
 public:
    static constexpr int ringSize = 50;  // holds at most ringSize - 1 events

    // Adds an event at the tail and returns its place in the ring.
    // - EV_REDRAW is added once only: a second one returns the place of the first.
    // - EV_QUIT empties the queue before it is added, so it is never lost.
    // - Mouse moves and timer ticks never fill the ring, which keys and buttons need: once it is
    //   half full a move replaces the one posted right before it, and a tick joins the one queued.
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

    // Moves that are queued before the next button event.
    int movesBeforeButton() const;

    // Drops every queued event for which `unwanted` is true. While it is asked about an event, the
    // queue holds those that come after it.
    template <class Predicate>
    void drop(Predicate unwanted) {
        EventQueue kept;
        while (!empty()) {
            const InputEvent event = take();
            if (!unwanted(event)) kept.add(event);
        }
        *this = kept;
    }

 private:
    int find(int32_t code) const;  // place in the ring, -1 when absent
    int add(const InputEvent& event);
    bool endsWithMove() const;

    std::array<InputEvent, ringSize> ring_{};
    int head_ = 0, tail_ = 0;
};

}  // namespace vistel

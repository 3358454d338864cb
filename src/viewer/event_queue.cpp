#include "viewer/event_queue.h"

namespace vistel {

int EventQueue::find(int32_t code) const {
    for (int i = head_; i != tail_; i = (i + 1) % ringSize) {
        if (ring_[i].code == code) return i;
    }
    return -1;
}

int EventQueue::post(int32_t code, uint16_t value) {
    if (code == EV_REDRAW) {
        const int queued = find(EV_REDRAW);
        if (queued >= 0) return queued;
    }
    if (code == EV_QUIT) clear();
    const int next = (tail_ + 1) % ringSize;
    if (next == head_) return ringSize - 1;
    const int place = tail_;
    ring_[place] = {code, value};
    tail_ = next;
    return place;
}

InputEvent EventQueue::take() {
    const InputEvent event = ring_[head_];
    head_ = (head_ + 1) % ringSize;
    return event;
}

}  // namespace vistel

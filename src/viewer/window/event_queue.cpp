#include "viewer/window/event_queue.h"

namespace vistel {

int EventQueue::find(int32_t code) const {
    for (int i = head_; i != tail_; i = (i + 1) % ringSize) {
        if (ring_[i].code == code) return i;
    }
    return -1;
}

bool EventQueue::endsWithMove() const {
    if (count() < 2) return false;
    const int row = (tail_ + ringSize - 1) % ringSize, column = (row + ringSize - 1) % ringSize;
    return ring_[column].code == EV_MOUSEX && ring_[row].code == EV_MOUSEY;
}

int EventQueue::add(const InputEvent& event) {
    const int next = (tail_ + 1) % ringSize;
    if (next == head_) return ringSize - 1;
    const int place = tail_;
    ring_[place] = event;
    tail_ = next;
    return place;
}

int EventQueue::post(int32_t code, uint16_t value) {
    const bool halfFull = count() >= ringSize / 2;
    if (code == EV_REDRAW || (code == EV_TIMER && halfFull)) {
        const int queued = find(code);
        if (queued >= 0) return queued;
    }
    if (code == EV_QUIT) clear();
    if (code == EV_MOUSEX && halfFull && endsWithMove()) tail_ = (tail_ + ringSize - 2) % ringSize;
    return add({code, value});
}

int EventQueue::movesBeforeButton() const {
    int moves = 0;
    for (int i = head_; i != tail_ && !isButton(ring_[i].code); i = (i + 1) % ringSize)
        moves += ring_[i].code == EV_MOUSEY;
    return moves;
}

InputEvent EventQueue::take() {
    const InputEvent event = ring_[head_];
    head_ = (head_ + 1) % ringSize;
    return event;
}

}  // namespace vistel

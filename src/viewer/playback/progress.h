// How far the loading or saving of a range is: told in the title and, when it is a terminal, on the
// console, a few times a second.
#pragma once

#include <cstdint>
#include <functional>

#include "host/tstring.h"

namespace vistel {

class Progress {
 public:
    // `text` tells of a frame.
    explicit Progress(std::function<Tstring(int frame)> text);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // The frame of this number, counted from 1, is at work.
    void show(int frame);
    // Also called while a frame takes long: its text may have come too soon after the one before.
    void refresh();

 private:
    std::function<Tstring(int frame)> text_;
    bool console_;
    int frame_ = 0, shown_ = 0;
    uint32_t shownAt_ = 0;  // tick
};

}  // namespace vistel

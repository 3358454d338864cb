// How far the loading of a range is: told in the title and, when it is a terminal, on the console,
// a few times a second.
#pragma once

#include <cstdint>
#include <string>

namespace vistel {

class LoadProgress {
 public:
    // Of so many frames of the source of this name.
    LoadProgress(const std::string& source, int frames);
    ~LoadProgress();
    LoadProgress(const LoadProgress&) = delete;
    LoadProgress& operator=(const LoadProgress&) = delete;

    // The frame of this number, counted from 1, is being loaded.
    void show(int frame);
    // Also called while a frame takes long: its text may have come too soon after the one before.
    void refresh();

 private:
    std::string source_;
    int frames_;
    bool console_;
    int frame_ = 0, shown_ = 0;
    uint32_t shownAt_ = 0;  // tick
};

}  // namespace vistel

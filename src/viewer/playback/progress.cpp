#include "viewer/playback/progress.h"

#include <cstdio>
#include <utility>

#include "platform/clock.h"
#include "platform/files.h"
#include "viewer/window/window_layer.h"

namespace vistel {

static constexpr unsigned interval = 100;  // milliseconds between two texts

Progress::Progress(std::function<Tstring(int frame)> text)
    : text_(std::move(text)), console_(platform::isTerminal(2)) {}

Progress::~Progress() {
    if (console_ && shown_) std::fprintf(stderr, "\n");
}

void Progress::show(int frame) {
    frame_ = frame;
    refresh();
}

void Progress::refresh() {
    const uint32_t now = platform::tickMilliseconds();
    if (frame_ == shown_ || (shown_ && now - shownAt_ < interval)) return;
    shown_ = frame_;
    shownAt_ = now;
    const Tstring text = text_(frame_);
    setViewerTitle(text);
    if (console_) std::fprintf(stderr, "\r%s", text.c_str());
}

}  // namespace vistel

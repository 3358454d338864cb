#include "viewer/playback/load_progress.h"

#include <cstdio>

#include "host/messages.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "viewer/window/window_layer.h"

namespace vistel {

static constexpr unsigned interval = 100;  // milliseconds between two texts

LoadProgress::LoadProgress(const std::string& source, int frames)
    : source_(source), frames_(frames), console_(platform::isTerminal(2)) {}

LoadProgress::~LoadProgress() {
    if (console_ && shown_) std::fprintf(stderr, "\n");
}

void LoadProgress::show(int frame) {
    frame_ = frame;
    refresh();
}

void LoadProgress::refresh() {
    const uint32_t now = platform::tickMilliseconds();
    if (frame_ == shown_ || (shown_ && now - shownAt_ < interval)) return;
    shown_ = frame_;
    shownAt_ = now;
    const Tstring text = formatMessage(Message::rVTLoading, {source_, frame_, frames_});
    setViewerTitle(text);
    if (console_) std::fprintf(stderr, "\r%s", printable(text).c_str());
}

}  // namespace vistel

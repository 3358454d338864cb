// Two windows at once, for test_windows.py. usage: two_windows loop|threads
//
//   loop      both on this thread, served by one loop
//   threads   each on a thread of its own
//
// Each window fills itself with a colour of its own, another one after the key C, and says line by
// line what becomes of it. Ends when both are closed.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/input_event.h"
#include "platform/surface.h"
#include "platform/window.h"

using namespace vistel;

namespace {

struct View {
    const char* name;
    platform::PixelRect place;
    uint32_t colours[2];
    int colour = 0;
    bool stale = true;
    platform::Window* window = nullptr;

    void say(const std::string& what) const {
        std::printf("%s %s\n", name, what.c_str());
        std::fflush(stdout);
    }
};

View& viewOf(void* owner) { return *static_cast<View*>(owner); }

void heard(void* owner, int code, unsigned value) {
    View& view = viewOf(owner);
    // Keys and buttons; where the pointer is says nothing.
    if (code == EV_MOUSEX || code == EV_MOUSEY) return;
    view.say("event " + std::to_string(code) + " " + std::to_string(value));
    if (code == 'C' && value == 1) {
        view.colour = 1;
        view.stale = true;
    }
}

platform::WindowSink sinkOf(View& view) {
    return {
        .owner = &view,
        .postEvent = heard,
        .command = [](void* owner, int id) { viewOf(owner).say("command " + std::to_string(id)); },
        .commandStarts = [](void*) {},
        .commandEnds = [](void*) {},
        .paint = [](void* owner) { viewOf(owner).stale = true; },
        .resized = [](void*) {}};
}

// Fills the window and counts the pixels that are not what was drawn.
void draw(View& view) {
    int width, height;
    platform::clientArea(view.window, width, height);
    platform::setViewport(view.window, width, height);
    const uint32_t colour = view.colours[view.colour];
    platform::setColour(view.window, uint8_t(colour), uint8_t(colour >> 8), uint8_t(colour >> 16),
                        255);
    platform::clearSurface(view.window);
    std::vector<uint32_t> pixels(size_t(width) * height);
    platform::readPixels(view.window, 0, 0, width, height, pixels.data());
    int wrong = 0;
    for (const uint32_t pixel : pixels) wrong += (pixel & 0xFFFFFF) != colour;
    platform::swapBuffers(view.window);
    view.stale = false;
    view.say("drawn " + std::to_string(view.colour) + " wrong " + std::to_string(wrong));
}

bool open(View& view) {
    view.window = platform::openWindow({view.name, view.place, true}, sinkOf(view));
    if (!platform::createSurface(view.window)) {
        view.say("refused");
        return false;
    }
    platform::setDoubleBuffered(view.window, true);
    int width, height, x, y;
    platform::clientArea(view.window, width, height);
    platform::clientScreenPosition(view.window, x, y);
    view.say("opened " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(width) +
             " " + std::to_string(height));
    return true;
}

// Ends the view's part when its window has gone.
bool goesOn(View& view) {
    if (!view.window) return false;
    if (!platform::windowExists(view.window)) {
        view.say("closed");
        platform::releaseWindow(view.window);
        view.window = nullptr;
        return false;
    }
    if (view.stale) draw(view);
    return true;
}

void serve(const std::vector<View*>& views) {
    for (;;) {
        platform::pumpMessages();
        int open = 0;
        for (View* view : views) open += goesOn(*view);
        if (open == 0) return;
        platform::waitMessage();
    }
}

// Draws one text over and over again, as the other thread does; how often it came out otherwise.
int differentTexts(const char* text) {
    platform::FontHandle* const font = [] {
        static platform::FontHandle* const shared = platform::createFont({});
        return shared;
    }();
    const std::vector<uint8_t> first = platform::renderText(font, text).rows;
    int different = 0;
    for (int i = 0; i < 300; ++i) different += platform::renderText(font, text).rows != first;
    return different;
}

void live(View& view) {
    if (!open(view)) return;
    view.say("texts wrong " + std::to_string(differentTexts(view.name)));
    serve({&view});
}

}  // namespace

int main(int argc, char** argv) {
    View left{.name = "left", .place = {60, 120, 460, 320}, .colours = {0x2010F0, 0x10C0C0}};
    View right{.name = "right", .place = {640, 400, 1000, 700}, .colours = {0xE03010, 0xC010C0}};
    const std::string mode = argc == 2 ? argv[1] : "";
    if (mode == "loop") {
        if (!open(left) || !open(right)) return 1;
        serve({&left, &right});
        return 0;
    }
    if (mode == "threads") {
        std::thread other([&] { live(right); });
        live(left);
        other.join();
        return 0;
    }
    std::fprintf(stderr, "usage: two_windows loop|threads\n");
    return 1;
}

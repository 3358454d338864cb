// bench_play: the viewer's own loop on a real window, with every presented picture noted.
//
//     bench_play rate FRAMES_PER_SECOND WIDTH HEIGHT SECONDS   plays 48 frames from memory
//     bench_play skip FRAMES_PER_SECOND WIDTH HEIGHT SECONDS   the same, skipping late frames
//     bench_play commands FRAMES_PER_SECOND WIDTH HEIGHT SECONDS   the same as `rate`, while a
//                              command of the menu and one of the bar change the view by turns
//     bench_play idle SECONDS                                  shows one picture and waits
//     bench_play first FILE    ends when the file's picture is there
//     bench_play bare          ends when one textured quad is there
//
// Printed, one "name value" to a line: rate (of the range or of the frames, against the nominal
// one), wrong (frames shown twice or left out), delay (the longest that a command took, in frames),
// idle_processor (seconds). The last two modes print nothing: the time of the whole process counts.
// (Linked with --wrap for swapBuffers.)

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>
#include <vector>

#include "bench_pictures.h"
#include "platform/clock.h"
#include "platform/surface.h"
#include "platform/window.h"
#include "resources/command_ids.h"
#include "sequence/image_source.h"
#include "viewer/picture/display_lut.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/draw_pass.h"
#include "viewer/playback/frame_display.h"
#include "viewer/show_source.h"
#include "viewer/viewer_loop.h"
#include "viewer/viewer_state.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"

using namespace vistel;

namespace {

constexpr int lastFrame = 48;

struct Shown {
    uint64_t microseconds;
    int frame;
};
std::vector<Shown> shown;
constexpr size_t settling = 10;  // presents until the window's own first redraws are over
uint64_t endAt = UINT64_MAX;     // microseconds
bool endAtFirst = false;

// A view that is asked for by a command every few frames; what is presented next is to show it.
struct TimedCommands {
    bool on = false;
    ChannelMode wanted = ChannelMode::all;
    int waiting = 0, longest = 0;  // presented pictures without and with it, since the command

    void presented(size_t count) {
        if (!on) return;
        ++waiting;
        if (viewerState.mode == wanted) longest = std::max(longest, std::exchange(waiting, 0));
        if (count % 7 || waiting) return;
        const bool red = wanted == ChannelMode::all;
        wanted = red ? ChannelMode::red : ChannelMode::all;
        windowContext().calls.command(red ? COMMAND_RED_CHANNEL : BAR_ALL_CHANNELS);
    }
} timedCommands;

}  // namespace

// What the linker puts in the place of platform::swapBuffers, and the real one.
extern "C" void realSwap(vistel::platform::Window*) __asm__(
    "__real__ZN6vistel8platform11swapBuffersEPNS0_6WindowE");
extern "C" void notedSwap(vistel::platform::Window*) __asm__(
    "__wrap__ZN6vistel8platform11swapBuffersEPNS0_6WindowE");

void notedSwap(vistel::platform::Window* window) {
    realSwap(window);
    if (endAtFirst) std::_Exit(0);
    const uint64_t now = platform::tickMicroseconds();
    shown.push_back({now, viewerState.currentFrame});
    timedCommands.presented(shown.size());
    if (now >= endAt) postEvent(EV_QUIT, 1);
}

namespace {

FrameStore makeFrame(int number, int width, int height) {
    FrameStore frame;
    frame.header.width = static_cast<uint32_t>(frame.width = width);
    frame.header.height = static_cast<uint32_t>(frame.height = height);
    frame.header.flags = imageColour | imageMask;
    if (!frame.colour.allocate(static_cast<size_t>(width), static_cast<size_t>(height)) ||
        !frame.colour.complete()) {
        std::exit(1);
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            frame.colour.row(static_cast<size_t>(y))[x] =
                0xFF000000u | static_cast<uint32_t>((x + 5 * number) << 8 ^ y);
    return frame;
}

// The viewer as it is when a sequence has been loaded.
void showFrames(int count, int width, int height) {
    installViewer(viewerState);
    viewerState.fileName = "bench";
    viewerState.animation = count > 1;
    viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
    viewerState.lastFrame = viewerState.playLast = count;
    viewerState.frameStep = 1;
    viewerState.noRescale = 1;
    startDisplayLut(viewerState);
    for (int frame = 1; frame <= count; ++frame)
        keepFrame(viewerState, frame, makeFrame(frame, width, height));
    beginDisplay(viewerState, *viewerState.slots.find(1));
    windowContext().drawPass = [] { drawPass(viewerState); };
}

// Frames that follow each other as they should not. A command presents the frame of before again.
int countWrong() {
    int wrong = 0;
    for (size_t i = 1; i < shown.size(); ++i) {
        const int before = shown[i - 1].frame, next = shown[i].frame;
        wrong += next != before % lastFrame + 1 && !(timedCommands.on && next == before);
    }
    return wrong;
}

// Frames that passed between the first and the last presented picture, shown or skipped.
int64_t framesPassed() {
    int64_t passed = 0;
    for (size_t i = 1; i < shown.size(); ++i)
        passed += (shown[i].frame - shown[i - 1].frame + lastFrame) % lastFrame;
    return passed;
}

enum class PlayedAs { all, skipping, commanded };

int play(char** arguments, PlayedAs how) {
    const int rate = std::atoi(arguments[0]);
    showFrames(lastFrame, std::atoi(arguments[1]), std::atoi(arguments[2]));
    viewerState.frameRate = rate;
    viewerState.frameSkip = how == PlayedAs::skipping;
    timedCommands.on = how == PlayedAs::commanded;
    shown.reserve(1 << 20);
    endAt = platform::tickMicroseconds() + static_cast<uint64_t>(std::atof(arguments[3]) * 1e6);
    runViewerLoop(viewerState);
    if (shown.size() < settling + 2) return 1;
    shown.erase(shown.begin(), shown.begin() + settling);
    const double seconds =
        static_cast<double>(shown.back().microseconds - shown.front().microseconds) * 1e-6;
    const double nominal = static_cast<double>(framesPassed()) / rate;
    std::printf("rate %.6f\nwrong %d\npresented %zu\n", nominal / seconds, countWrong(),
                shown.size());
    if (timedCommands.on)
        std::printf("delay %d\n", std::max(timedCommands.longest, timedCommands.waiting));
    return 0;
}

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// The window's own timer wakes the loop once a second; its pass ends it.
int idle(char** arguments) {
    showFrames(1, 640, 480);
    const uint64_t wait = static_cast<uint64_t>(std::atof(arguments[0]) * 1e6);
    drawPass(viewerState);
    swapDrawing();
    const uint64_t start = platform::tickMicroseconds();
    const double before = processorSeconds();
    while (platform::tickMicroseconds() - start < wait) (void)waitEvent();
    std::printf("idle_processor %.6f\n", processorSeconds() - before);
    return 0;
}

int firstPicture(char** arguments) {
    installViewer(viewerState);
    viewerState.startDirectory = "";
    viewerState.firstFrame = viewerState.lastFrame = viewerState.currentFrame = 1;
    viewerState.frameStep = viewerState.playFirst = viewerState.playLast = 1;
    viewerState.noRescale = 1;
    viewerState.fileName = arguments[0];
    startDisplayLut(viewerState);
    endAtFirst = true;
    FrameStore frame;
    if (openImageSource(viewerState, arguments[0], readTerms(viewerState), false, frame) != 0)
        return 1;
    showSource(viewerState, std::move(frame));
    return 1;  // not reached
}

int bareWindow() {
    constexpr int width = 1920, height = 1080;
    const std::vector<uint32_t> picture(size_t{width} * height, 0xFF808080u);
    const platform::WindowSink sink{nullptr,           [](void*, int, unsigned) {},
                                    [](void*, int) {}, [](void*) {},
                                    [](void*) {},      [](void*) {},
                                    [](void*) {}};
    platform::Window* const window =
        platform::openWindow({"bench", {0, 0, width, height}, true}, sink);
    if (!platform::createSurface(window)) return 1;
    platform::setDoubleBuffered(window, true);
    platform::setViewport(window, width, height);
    platform::drawPixels(window, 0, 0, {picture.data(), width, 0, 0, width, height}, 1);
    endAtFirst = true;
    platform::swapBuffers(window);
    return 1;  // not reached
}

}  // namespace

int main(int argc, char** argv) {
    const auto mode = [&](const char* name, int arguments) {
        return argc == 2 + arguments && std::strcmp(argv[1], name) == 0;
    };
    if (mode("rate", 4)) return play(argv + 2, PlayedAs::all);
    if (mode("skip", 4)) return play(argv + 2, PlayedAs::skipping);
    if (mode("commands", 4)) return play(argv + 2, PlayedAs::commanded);
    if (mode("idle", 1)) return idle(argv + 2);
    if (mode("first", 1)) return firstPicture(argv + 2);
    if (mode("bare", 0)) return bareWindow();
    std::fprintf(stderr,
                 "usage: bench_play rate|skip|commands RATE WIDTH HEIGHT SECONDS, idle SECONDS, "
                 "first FILE, bare\n");
    return 1;
}

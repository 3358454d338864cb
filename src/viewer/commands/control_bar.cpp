#include "viewer/commands/control_bar.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/messages.h"
#include "platform/control_bar.h"
#include "platform/input_event.h"
#include "resources/command_ids.h"
#include "viewer/picture/picture_view.h"
#include "viewer/playback/frame_rate.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"

namespace vistel {

namespace {

using platform::BarButtonLook;
using platform::BarIcon;

// --- what the buttons do ------------------------------------------------------------------------

void postKey(Viewer&, int key) { postEvent(key, 1); }

void jumpToEnd(Viewer& viewer, int arrow) {
    viewer.jumpToEnds = true;
    postEvent(arrow, 1);
}

// In the direction of `mode`, or paused and on again when that is the one in force.
void play(Viewer& viewer, PlayMode mode) {
    const char key = mode == PlayMode::backward ? ',' : '.';
    postEvent(viewer.playMode == mode ? int{keySpace} : int{characterKey(key)}, 1);
}
void playBackward(Viewer& viewer, int) { play(viewer, PlayMode::backward); }
void playForward(Viewer& viewer, int) { play(viewer, PlayMode::forward); }

// The next picture may follow the button's at once, so it is given time to be seen.
void showAndRest(Viewer& viewer, int key) {
    postEvent(key, 1);
    viewer.restRequested = true;
}

// --- how they look ------------------------------------------------------------------------------

bool steps(const Viewer& viewer) { return viewer.animation != 0; }
// A sound that is heard plays forward only.
bool playsBackward(const Viewer& viewer) {
    return viewer.animation && !(viewer.soundOn && viewer.soundLoaded);
}
template <ChannelMode view>
bool shows(const Viewer& viewer) {
    return viewer.shown && hasView(viewer, view);
}

struct BarBinding {
    int id;
    void (*command)(Viewer& viewer, int argument);
    int argument;
    bool (*enabled)(const Viewer&);
    BarIcon icon;
    Message tip;
};
constexpr BarBinding bindings[] = {
    // clang-format off
    {BAR_TO_START,      jumpToEnd,    keyLeftArrow,  steps,                           BarIcon::toStart,      Message::rVTBarToStart},
    {BAR_STEP_BACK,     postKey,      keyLeftArrow,  steps,                           BarIcon::stepBack,     Message::rVTBarStepBack},
    {BAR_PLAY_BACKWARD, playBackward, 0,             playsBackward,                   BarIcon::playBackward, Message::rVTBarPlayBackward},
    {BAR_PLAY_FORWARD,  playForward,  0,             steps,                           BarIcon::playForward,  Message::rVTBarPlayForward},
    {BAR_STEP_FORWARD,  postKey,      keyRightArrow, steps,                           BarIcon::stepForward,  Message::rVTBarStepForward},
    {BAR_TO_END,        jumpToEnd,    keyRightArrow, steps,                           BarIcon::toEnd,        Message::rVTBarToEnd},
    {BAR_ALL_CHANNELS,  postKey,      'C',           shows<ChannelMode::all>,         BarIcon::channels,     Message::rVTBarAllChannels},
    {BAR_MASK,          showAndRest,  'A',           shows<ChannelMode::matte>,       BarIcon::mask,         Message::rVTBarMask},
    {BAR_DEPTH,         showAndRest,  'Z',           shows<ChannelMode::zBuffer>,     BarIcon::depth,        Message::rVTBarDepth},
    {BAR_LUMINANCE,     postKey,      'L',           shows<ChannelMode::luminance>,   BarIcon::channels,     Message::none},  // without a button
    // clang-format on
};
static_assert(std::size(bindings) == std::tuple_size_v<decltype(BarState::looks)>);

std::optional<PlayMode> modeOf(int button) {
    if (button == BAR_PLAY_BACKWARD) return PlayMode::backward;
    if (button == BAR_PLAY_FORWARD) return PlayMode::forward;
    return std::nullopt;
}

BarButtonLook lookOf(const BarBinding& binding, const Viewer& viewer) {
    BarButtonLook look{binding.icon, false, binding.enabled(viewer)};
    look.active = viewer.animation && modeOf(binding.id) == viewer.playMode;
    if (look.active && !viewer.paused) look.icon = BarIcon::pause;
    return look;
}

}  // namespace

bool isBarCommand(int id) { return id < COMMAND_FIRST; }

void runBarCommand(Viewer& viewer, int id) {
    const auto* binding = std::ranges::find(bindings, id, &BarBinding::id);
    if (binding == std::end(bindings) || !binding->enabled(viewer)) return;
    binding->command(viewer, binding->argument);
}

void typeRate(Viewer& viewer, const std::string& text) {
    setTypedFrameRate(viewer, text);
    platform::showBarRate(windowContext().window, std::to_string(viewer.frameRate));
}

void showBarState(Viewer& viewer) {
    if (!windowContext().controlBarShown) return;
    platform::Window* const window = windowContext().window;
    BarState now;
    now.rate = effectiveFrameRate(viewer);
    for (size_t i = 0; i < now.looks.size(); ++i) now.looks[i] = lookOf(bindings[i], viewer);
    const std::optional<BarState> before = std::exchange(viewer.barOnScreen, now);
    for (size_t i = 0; i < now.looks.size(); ++i)
        if (!before || before->looks[i] != now.looks[i])
            platform::showBarButton(window, bindings[i].id, now.looks[i]);
    if (!before || before->rate != now.rate)
        platform::showBarRate(window, std::to_string(now.rate));
}

void prepareBar(Viewer& viewer) {
    for (const BarBinding& binding : bindings)
        platform::setBarTip(windowContext().window, binding.id, messageText(binding.tip));
    platform::setBarTip(windowContext().window, BAR_RATE, messageText(Message::rVTBarRate));
    viewer.barOnScreen.reset();
    showBarState(viewer);
}

}  // namespace vistel

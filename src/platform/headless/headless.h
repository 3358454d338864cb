// The desktop and the clocks as plain memory: what unit tests of the viewer use instead of a window
// system. Time is a manual clock, each surface an array of pixels, the user a script.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/bar_picture.h"
#include "platform/dialogs.h"
#include "platform/window.h"

namespace vistel::platform::headless {

// A new desktop: no window, tick 0, screen 1280 x 1024 with a work area of the same size, windows
// without frames. Windows that are open are closed; their handles stay good.
void reset();

// The part of the screen that no task bar covers, and how thick the frame of a window with border
// is on each of its sides.
void setWorkArea(const PixelRect& work);
void setFrame(const PixelRect& thickness);
// Texts keep their size; what is measured by them does not.
void setTextScale(float scale);

// The window that the user sits at and that the questions below are about: the one opened last, or
// the one chosen since. Null when there was none, or when it was released.
Window* window();
void use(Window* window);

// --- clock ---
void setMicroseconds(uint64_t now);
void advanceMilliseconds(uint64_t milliseconds);

// --- user ---
// Each step is handled by one pump (or wait); a step usually calls press, click, close.
void script(std::function<void()> step);
void press(int code);    // key down
void release(int code);  // key up
void type(int code);     // down and up
void moveMouse(int x, int y);
void moveMouseUnseen(int x, int y);  // the events have not arrived yet
// The user picks a command of the menu.
void choose(int command);
// The user clicks on a button of the control bar that is not grey; changes the text of its field.
void click(int button);
void typeRate(const std::string& text);
// The window was covered and is to be seen again.
void uncover();
// The user closes the window.
void close();
// From now on a swap exchanges the two buffers: what is drawn next lies on garbage.
void exchangeBuffers();
constexpr uint32_t garbage = 0xFF5A3CC5;
// Called when the program waits and the script is at its end; closes all windows by default, so
// that no test can hang.
void whenIdle(std::function<void()> action);

// --- what the program did ---
struct Image {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;  // rows from bottom to top
    uint32_t at(int x, int y) const { return pixels[size_t(y) * width + x]; }
};
// The picture that the last swap or flush made visible.
const Image& visibleImage();
int presents();  // pictures made visible since reset
// Called whenever a picture has become visible, from inside the swap or flush.
void whenPresented(std::function<void()> action);
const std::string& title();
const std::vector<std::string>& titles();  // every title ever set, of all windows
PixelRect windowRect();
int windowsOpened();  // since reset
bool windowHasBorder();
bool crossCursor();
unsigned timerPeriod();  // milliseconds; 0: no timer was started
int readBacks();         // of drawn pixels, since reset
bool windowOpen();
const std::vector<std::string>& messageBoxes();
const std::vector<std::string>& pagesShown();  // in the browser, by their addresses
bool menuChecked(int command);
bool menuEnabled(int command);
// Texts drawn since the last present became visible, with the position of their baseline start.
struct DrawnText {
    std::string text;
    int x = 0, y = 0;
};
const std::vector<DrawnText>& visibleTexts();
bool dithering();
bool doubleBuffered();

// The open control bar; null while it is closed.
struct Bar {
    std::map<int, BarButtonLook> looks;
    std::map<int, std::string> tips;
    std::string rate;
};
const Bar* bar();

// How the user answers questions from now on (no at first), and what he chooses in the dialogs for
// files (cancels them at first).
void answerQuestions(bool yes);
void chooseFiles(std::function<std::optional<FileChoice>(const FileRequest&)> chooser);
// The user drops files or folders on the window.
void drop(const std::vector<std::string>& names);

// From now on every thread can have windows: those of one at a time, for the script is one.
void allowEveryThread();
// Makes the next openWindow fail.
void refuseWindow();
// From now on there is no browser.
void removeBrowser();

// --- sound ---
// The device that records. It plays what it was given as the test says, or at once when it plays by
// itself.
struct WaveFaults {
    bool absent = false;      // there is no device
    bool playsAtOnce = true;  // else only playWaves plays
    int blocksToTake = -1;    // from then on it has gone; less than none: always there
    int blocksToLose = 0;     // that are done without having been heard
    int64_t bytesInHardware = 0;
    bool noRing = true;
    bool ringLost = false;  // to be restored
};
void resetWaves(const WaveFaults& faults);
void setWaveFaults(const WaveFaults& faults);
// Plays up to so many bytes; a block is done when its last byte was played.
void playWaves(size_t bytes);
struct RecordedWaves {
    std::vector<uint8_t> heard;  // in the order in which it was played
    int opened = 0, closed = 0, blocks = 0, takenBack = 0, restored = 0;
    int32_t channels = 0, rate = 0, bits = 0;
    bool ringPlays = false;
    int32_t volume = 0, pan = 0;  // of the mixer
};
RecordedWaves recordedWaves();
// What the timer of a ring would do after its period; nothing where none runs.
void fireWaveTimer();

}  // namespace vistel::platform::headless

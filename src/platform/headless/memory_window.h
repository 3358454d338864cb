// A window that is plain memory, and its surface.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/headless/headless.h"
#include "platform/window.h"

namespace vistel::platform {

// Texts in the order in which they were drawn. What is cleared keeps its memory, so that drawing
// the same texts again allocates nothing.
class TextRecord {
 public:
    void add(std::string_view text, int x, int y);
    void clear();
    const std::vector<headless::DrawnText>& texts() const { return texts_; }

 private:
    std::vector<headless::DrawnText> texts_, spare_;
};

// Pixels, right and top exclusive, bottom-left origin.
struct MemoryBox {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};

struct MemorySurface {
    bool exists = false;
    bool doubleBuffered = true;
    bool dithering = false;
    bool scissorTest = false;
    MemoryBox scissor;
    uint32_t colour = 0xFF000000;
    headless::Image drawn, visible;
    TextRecord drawnTexts, visibleTexts;

    void resize(int width, int height);
};

// The commands of the menu table's grey items.
std::set<int> greyedAtFirst();

struct Window {
    bool open = true;
    WindowSink sink{};
    std::string title;
    PixelRect client;
    bool border = true;
    bool crossCursor = false;
    unsigned timerPeriod = 0;
    std::set<int> checked;
    std::set<int> disabled = greyedAtFirst();
    std::optional<headless::Bar> bar;
    MemorySurface surface;
};

// What surfaces have in common: counters and settings of the desktop. A new one.
void resetSurfaces();

}  // namespace vistel::platform

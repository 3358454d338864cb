#include "platform/surface.h"

#include <algorithm>
#include <utility>

#include "platform/headless/headless.h"
#include "platform/headless/surface_memory.h"

namespace vistel::platform {

struct FontHandle {};

namespace {

// One pixel rectangle, right and top exclusive, bottom-left origin.
struct Box {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};

// Texts in the order in which they were drawn. What is cleared keeps its memory, so that drawing
// the same texts again allocates nothing.
class TextRecord {
 public:
    void add(std::string_view text, int x, int y) {
        headless::DrawnText drawn;
        if (!spare_.empty()) {
            drawn = std::move(spare_.back());
            spare_.pop_back();
        }
        drawn.text.assign(text);
        drawn.x = x;
        drawn.y = y;
        texts_.push_back(std::move(drawn));
    }
    void clear() {
        for (headless::DrawnText& drawn : texts_) spare_.push_back(std::move(drawn));
        texts_.clear();
    }
    const std::vector<headless::DrawnText>& texts() const { return texts_; }

 private:
    std::vector<headless::DrawnText> texts_, spare_;
};

struct MemorySurface {
    bool exists = false;
    bool doubleBuffered = true;
    bool dithering = false;
    bool scissorTest = false;
    Box scissor;
    uint32_t colour = 0xFF000000;
    headless::Image drawn, visible;
    bool exchange = false;  // a swap leaves garbage to draw on
    int presents = 0, readBacks = 0;
    std::function<void()> presented;
    TextRecord drawnTexts, visibleTexts;
};
MemorySurface surface;

Box clip() {
    const Box all{0, 0, surface.drawn.width, surface.drawn.height};
    if (!surface.scissorTest) return all;
    const Box& s = surface.scissor;
    return {std::max(all.x0, s.x0), std::max(all.y0, s.y0), std::min(all.x1, s.x1),
            std::min(all.y1, s.y1)};
}

void fill(Box box) {
    const Box limits = clip();
    for (int y = std::max(box.y0, limits.y0); y < std::min(box.y1, limits.y1); ++y) {
        for (int x = std::max(box.x0, limits.x0); x < std::min(box.x1, limits.x1); ++x) {
            surface.drawn.pixels[size_t(y) * surface.drawn.width + x] = surface.colour;
        }
    }
}

void present() {
    surface.visible = surface.drawn;
    std::swap(surface.visibleTexts, surface.drawnTexts);
    surface.drawnTexts.clear();
    ++surface.presents;
    if (surface.presented) surface.presented();
}

constexpr int textRows = 8;

}  // namespace

void memorySurfaceReset() { surface = MemorySurface{}; }

void memorySurfaceResize(int width, int height) {
    surface.drawn = {width, height, std::vector<uint32_t>(size_t(width) * height)};
    surface.visible = surface.drawn;
}

bool createSurface() {
    if (!surface.exists) surface.dithering = false;
    return surface.exists = true;
}
void destroySurface() { surface.exists = false; }
bool surfaceExists() { return surface.exists; }
void setDoubleBuffered(bool on) {
    surface.doubleBuffered = on;
    if (!on && surface.exchange) surface.drawn = surface.visible;
}
void setDithering(bool on) { surface.dithering = on; }
void setViewport(int, int) {}
void setScissorTest(bool on) { surface.scissorTest = on; }
void setScissor(int x, int y, int width, int height) {
    surface.scissor = {x, y, x + width, y + height};
}
void setColour(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
    surface.colour = red | uint32_t{green} << 8 | uint32_t{blue} << 16 | uint32_t{alpha} << 24;
}
void clearSurface() { fill({0, 0, surface.drawn.width, surface.drawn.height}); }

void drawPixels(int x, int y, const PixelSource& source, int zoom) {
    const uint32_t before = surface.colour;
    for (int r = 0; r < source.height; ++r) {
        for (int c = 0; c < source.width; ++c) {
            surface.colour =
                source.pixels[size_t(source.row + r) * source.rowLength + source.column + c];
            fill({x + c * zoom, y + r * zoom, x + (c + 1) * zoom, y + (r + 1) * zoom});
        }
    }
    surface.colour = before;
}

void fillRectangle(int x0, int y0, int x1, int y1) { fill({x0, y0, x1 + 1, y1 + 1}); }

void drawLine(int x0, int y0, int x1, int y1) {
    const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
    for (int i = 0; i <= steps; ++i) {
        const int x = x0 + (x1 - x0) * i / steps, y = y0 + (y1 - y0) * i / steps;
        fill({x, y, x + 1, y + 1});
    }
}

// Every character is a block.
void drawText(FontHandle* font, int x, int y, std::string_view text) {
    surface.drawnTexts.add(text, x, y);
    fill({x, y, x + textWidth(font, surface.drawnTexts.texts().back().text), y + textRows});
}

void readPixels(int x, int y, int width, int height, uint32_t* pixels) {
    ++surface.readBacks;
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) *pixels++ = surface.drawn.at(x + c, y + r);
    }
}

void flushSurface() {
    if (!surface.doubleBuffered) present();
}
void swapBuffers() {
    present();
    if (surface.exchange && surface.doubleBuffered)
        std::fill(surface.drawn.pixels.begin(), surface.drawn.pixels.end(), headless::garbage);
}

FontHandle* createFont(const FontRequest&) {
    static FontHandle font;
    return &font;
}
int textWidth(FontHandle*, const std::string& text) { return static_cast<int>(text.size()) * 6; }
TextCoverage renderText(FontHandle* font, const std::string& text) {
    TextCoverage coverage{textWidth(font, text), textRows, 0, {}};
    coverage.rows.assign(size_t(coverage.width) * coverage.height, 255);
    return coverage;
}

namespace headless {

const Image& visibleImage() { return surface.visible; }
int presents() { return surface.presents; }
void whenPresented(std::function<void()> action) { surface.presented = std::move(action); }
int readBacks() { return surface.readBacks; }
void exchangeBuffers() { surface.exchange = true; }
const std::vector<DrawnText>& visibleTexts() { return surface.visibleTexts.texts(); }
bool dithering() { return surface.dithering; }
bool doubleBuffered() { return surface.doubleBuffered; }

}  // namespace headless

}  // namespace vistel::platform

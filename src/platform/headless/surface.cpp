#include "platform/surface.h"

#include <algorithm>
#include <utility>

#include "platform/headless/headless.h"
#include "platform/headless/memory_window.h"

namespace vistel::platform {

struct FontHandle {};

namespace {

struct Screen {
    bool exchange = false;  // a swap leaves garbage to draw on
    int presents = 0, readBacks = 0;
    std::function<void()> presented;
};
Screen screen;

// The surface to draw on; null when there is none.
MemorySurface* drawOn(Window* window) { return surfaceExists(window) ? &window->surface : nullptr; }

MemoryBox clip(const MemorySurface& surface) {
    const MemoryBox all{0, 0, surface.drawn.width, surface.drawn.height};
    if (!surface.scissorTest) return all;
    const MemoryBox& s = surface.scissor;
    return {std::max(all.x0, s.x0), std::max(all.y0, s.y0), std::min(all.x1, s.x1),
            std::min(all.y1, s.y1)};
}

void fill(MemorySurface& surface, MemoryBox box) {
    const MemoryBox limits = clip(surface);
    for (int y = std::max(box.y0, limits.y0); y < std::min(box.y1, limits.y1); ++y) {
        for (int x = std::max(box.x0, limits.x0); x < std::min(box.x1, limits.x1); ++x) {
            surface.drawn.pixels[size_t(y) * surface.drawn.width + x] = surface.colour;
        }
    }
}

void present(MemorySurface& surface) {
    surface.visible = surface.drawn;
    std::swap(surface.visibleTexts, surface.drawnTexts);
    surface.drawnTexts.clear();
    ++screen.presents;
    if (screen.presented) screen.presented();
}

constexpr int textRows = 8;

}  // namespace

void TextRecord::add(std::string_view text, int x, int y) {
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

void TextRecord::clear() {
    for (headless::DrawnText& drawn : texts_) spare_.push_back(std::move(drawn));
    texts_.clear();
}

void MemorySurface::resize(int width, int height) {
    drawn = {width, height, std::vector<uint32_t>(size_t(width) * height)};
    visible = drawn;
}

void resetSurfaces() { screen = Screen{}; }

bool createSurface(Window* window) {
    if (!windowExists(window)) return false;
    MemorySurface& surface = window->surface;
    if (!surface.exists) surface.dithering = false;
    return surface.exists = true;
}
void destroySurface(Window* window) {
    if (window) window->surface.exists = false;
}
bool surfaceExists(const Window* window) { return window && window->surface.exists; }

void setDoubleBuffered(Window* window, bool on) {
    if (!window) return;
    MemorySurface& surface = window->surface;
    surface.doubleBuffered = on;
    if (!on && screen.exchange) surface.drawn = surface.visible;
}
void setDithering(Window* window, bool on) {
    if (MemorySurface* surface = drawOn(window)) surface->dithering = on;
}
void setViewport(Window*, int, int) {}
void setScissorTest(Window* window, bool on) {
    if (window) window->surface.scissorTest = on;
}
void setScissor(Window* window, int x, int y, int width, int height) {
    if (window) window->surface.scissor = {x, y, x + width, y + height};
}
void setColour(Window* window, uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
    if (!window) return;
    window->surface.colour =
        red | uint32_t{green} << 8 | uint32_t{blue} << 16 | uint32_t{alpha} << 24;
}
void clearSurface(Window* window) {
    if (MemorySurface* surface = drawOn(window))
        fill(*surface, {0, 0, surface->drawn.width, surface->drawn.height});
}

void drawPixels(Window* window, int x, int y, const PixelSource& source, int zoom) {
    MemorySurface* const surface = drawOn(window);
    if (!surface) return;
    const uint32_t before = surface->colour;
    for (int r = 0; r < source.height; ++r) {
        for (int c = 0; c < source.width; ++c) {
            surface->colour =
                source.pixels[size_t(source.row + r) * source.rowLength + source.column + c];
            fill(*surface, {x + c * zoom, y + r * zoom, x + (c + 1) * zoom, y + (r + 1) * zoom});
        }
    }
    surface->colour = before;
}

void fillRectangle(Window* window, int x0, int y0, int x1, int y1) {
    if (MemorySurface* surface = drawOn(window)) fill(*surface, {x0, y0, x1 + 1, y1 + 1});
}

void drawLine(Window* window, int x0, int y0, int x1, int y1) {
    MemorySurface* const surface = drawOn(window);
    if (!surface) return;
    const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
    for (int i = 0; i <= steps; ++i) {
        const int x = x0 + (x1 - x0) * i / steps, y = y0 + (y1 - y0) * i / steps;
        fill(*surface, {x, y, x + 1, y + 1});
    }
}

// Every character is a block.
void drawText(Window* window, FontHandle* font, int x, int y, std::string_view text) {
    MemorySurface* const surface = drawOn(window);
    if (!surface) return;
    surface->drawnTexts.add(text, x, y);
    fill(*surface,
         {x, y, x + textWidth(font, surface->drawnTexts.texts().back().text), y + textRows});
}

void readPixels(Window* window, int x, int y, int width, int height, uint32_t* pixels) {
    MemorySurface* const surface = drawOn(window);
    if (!surface) return;
    ++screen.readBacks;
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) *pixels++ = surface->drawn.at(x + c, y + r);
    }
}

void flushSurface(Window* window) {
    MemorySurface* const surface = drawOn(window);
    if (surface && !surface->doubleBuffered) present(*surface);
}
void swapBuffers(Window* window) {
    MemorySurface* const surface = drawOn(window);
    if (!surface) return;
    present(*surface);
    if (screen.exchange && surface->doubleBuffered)
        std::fill(surface->drawn.pixels.begin(), surface->drawn.pixels.end(), headless::garbage);
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

int presents() { return screen.presents; }
void whenPresented(std::function<void()> action) { screen.presented = std::move(action); }
int readBacks() { return screen.readBacks; }
void exchangeBuffers() { screen.exchange = true; }

}  // namespace headless

}  // namespace vistel::platform

// Text as coverage: the system draws a line of text into an 8-bit image, which the surface then
// shows in any colour. A font is of no window: those of every thread may use it at the same time.
//
// Each system implements all of this itself (win32, linux, headless).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vistel::platform {

// The few properties the viewer's font is chosen by.
struct FontRequest {
    int height = -12;  // negative: character height in pixels without internal leading
    int weight = 400;  // 400 normal, 700 bold
    bool italic = false;
};

// How much larger texts are than their requests say, and with them all that is measured by them: 1
// on a screen of usual density. linux follows the density that is set for the screen; elsewhere 1.
float textScale();

// Pixels of a length in pixels at usual density.
inline int scaledForText(int pixels) {
    return static_cast<int>(float(pixels) * textScale() + 0.5f);
}

struct FontHandle;  // owned by the platform for the life of the process

// The best fit; never null.
FontHandle* createFont(const FontRequest& request);

// Width in pixels of a line of UTF-8 text.
int textWidth(FontHandle* font, const std::string& text);

// Coverage of a line of text: rows from top to bottom, 0 transparent to 255 opaque; `descent` is
// the number of rows below the baseline.
struct TextCoverage {
    int width = 0, height = 0, descent = 0;
    std::vector<uint8_t> rows;
};
TextCoverage renderText(FontHandle* font, const std::string& text);

}  // namespace vistel::platform

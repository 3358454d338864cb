// qdGR::Font: the viewer's one font, chosen by an X logical font description.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>

#include "host/tstring.h"
#include "platform/text.h"

namespace vistel::platform {
struct Window;
}

namespace vistel::qdGR {

// What a description such as "-*-helvetica-bold-r-normal--10-*-*-*-*-*-iso8859-1" asks for. The
// fields between the hyphens are foundry, face, weight, slant, set width, style, pixel size and
// seven more; only weight ("bold", any case), slant (first letter "i", any case) and pixel size
// ("*" stands for 10) count. Missing fields leave weight 400, upright, height -12.
platform::FontRequest parseFontDescription(std::string_view description);

class Font {
 public:
    explicit Font(const platform::FontRequest& request);

    // Pixels from the start of a line of text to its end.
    int width(std::string_view text) const;

    // Draws a line on the window's surface in the current colour, its baseline starting at (x, y).
    void draw(platform::Window* window, int x, int y, std::string_view text) const;

 private:
    int characterWidth(char character) const;

    platform::FontHandle* handle_;                               // lives as long as the process
    mutable std::array<std::atomic<int16_t>, 128> widths_ = {};  // of plain characters, plus 1
};

// The viewer's font, made at the first call and shared by all threads.
const Font& viewerFont();

}  // namespace vistel::qdGR

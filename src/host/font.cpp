#include "host/font.h"

#include <algorithm>
#include <string>

#include "platform/surface.h"

namespace vistel::qdGR {

namespace {

constexpr std::string_view viewerFontDescription =
    "-*-helvetica-bold-r-normal--10-*-*-*-*-*-iso8859-1";

// Fields of a description, counted from 1.
constexpr int weightField = 3, slantField = 4, pixelSizeField = 7;

constexpr int defaultPixelSize = 10;
constexpr int largestPixelSize = 1000;

void applyField(int field, const Tstring& text, platform::FontRequest& request) {
    if (field == weightField) request.weight = text.equalsIgnoringCase("bold") ? 700 : 400;
    if (field == slantField) request.italic = text.starts_with('i') || text.starts_with('I');
    if (field == pixelSizeField)
        request.height =
            -(text == "*" ? defaultPixelSize : std::min(text.asInt32(), largestPixelSize)) - 1;
}

}  // namespace

platform::FontRequest parseFontDescription(std::string_view description) {
    platform::FontRequest request;
    size_t hyphen = description.find('-');
    for (int field = 1; hyphen != std::string_view::npos; ++field) {
        const size_t start = hyphen + 1;
        hyphen = description.find('-', start);
        const size_t length = hyphen == std::string_view::npos ? hyphen : hyphen - start;
        applyField(field, Tstring(description.substr(start, length)), request);
    }
    return request;
}

Font::Font(const platform::FontRequest& request) : handle_(platform::createFont(request)) {}

// The same value whichever thread finds it out first; 0 stands for "not known yet".
int Font::characterWidth(char character) const {
    std::atomic<int16_t>& known = widths_[static_cast<unsigned char>(character)];
    if (known == 0) {
        const int width = platform::textWidth(handle_, std::string(1, character));
        if (width <= 0) return 0;
        known = static_cast<int16_t>(width + 1);
    }
    return known - 1;
}

int Font::width(std::string_view text) const {
    const auto plain = [](char c) { return static_cast<unsigned char>(c) < 128; };
    if (!std::all_of(text.begin(), text.end(), plain))
        return platform::textWidth(handle_, std::string(text));
    int width = 0;
    for (const char character : text) width += characterWidth(character);
    return width;
}

void Font::draw(platform::Window* window, int x, int y, std::string_view text) const {
    platform::drawText(window, handle_, x, y, text);
}

const Font& viewerFont() {
    static const Font font(parseFontDescription(viewerFontDescription));
    return font;
}

}  // namespace vistel::qdGR

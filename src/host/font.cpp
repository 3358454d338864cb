#include "host/font.h"

#include <algorithm>

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

int Font::width(const Tstring& text) const { return platform::textWidth(handle_, text); }

platform::TextCoverage Font::coverage(const Tstring& text) const {
    return platform::renderText(handle_, text);
}

const Font& viewerFont() {
    static const Font font(parseFontDescription(viewerFontDescription));
    return font;
}

}  // namespace vistel::qdGR

// qdGR::Font: the viewer's one font, chosen by an X logical font description.
#pragma once

#include <string_view>

#include "host/tstring.h"
#include "platform/text.h"

namespace vistel::qdGR {

// What a description such as "-*-helvetica-bold-r-normal--10-*-*-*-*-*-iso8859-1" asks for. The
// fields between the hyphens are foundry, face, weight, slant, set width, style, pixel size and
// seven more; only weight ("bold", any case), slant (first letter "i", any case) and pixel size
// ("*" stands for 10) count. Missing fields leave weight 400, upright, height -12.
platform::FontRequest parseFontDescription(std::string_view description);

class Font {
 public:
    explicit Font(const platform::FontRequest& request);

    // Pixels from the start of a text to its end.
    int width(const Tstring& text) const;

    // The text as a coverage image, to be drawn in any colour.
    platform::TextCoverage coverage(const Tstring& text) const;

 private:
    platform::FontHandle* handle_;  // lives as long as the process
};

// The viewer's font, made at the first call and shared by all threads.
const Font& viewerFont();

}  // namespace vistel::qdGR

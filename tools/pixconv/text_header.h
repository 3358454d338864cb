// Headers in words, as the portable map files have them: words between blanks, comments from a "#"
// to the end of the line.
#pragma once

#include <cstdint>
#include <string>

#include "byte_source.h"

namespace vistel {

inline bool isBlank(int byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// The next word and the one blank or line end behind it; cut at 80 characters. Empty at the end.
std::string readWord(ByteSource& source);

// A number below 2^31. False when the word is none.
[[nodiscard]] bool parseNumber(const std::string& word, uint32_t& number);
[[nodiscard]] bool readNumber(ByteSource& source, uint32_t& number);

// The rest of the line, without its end.
std::string readLine(ByteSource& source);

}  // namespace vistel

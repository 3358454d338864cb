// UTF-8 to and from the system's other encodings. File names need none of this: the program's
// manifest makes UTF-8 the code page of the "A" functions. GDI and key characters ignore that
// setting, and the command interpreter writes in the console's code page.
#pragma once

#include <string>
#include <string_view>

namespace vistel::platform {

// UTF-16 of a UTF-8 text; ill-formed bytes become U+FFFD.
std::wstring wideText(std::string_view utf8);

std::string utf8Text(std::wstring_view wide);

// UTF-8 of a text in one of the system's code pages.
std::string utf8FromCodePage(std::string_view text, unsigned codePage);

}  // namespace vistel::platform

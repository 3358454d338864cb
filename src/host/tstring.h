// Tstring: the text type of names and user messages. A std::string of UTF-8 bytes with the number
// readings and the positional formatting that options and messages need.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace vistel {

class Tstring : public std::string {
 public:
    using std::string::string;
    Tstring() = default;
    Tstring(const std::string& text) : std::string(text) {}
    Tstring(std::string&& text) : std::string(std::move(text)) {}
    Tstring(std::string_view text) : std::string(text) {}

    // Decimal readings. Leading blanks are skipped; text that does not begin with a number reads as
    // 0; values out of range are clamped to the type's limits.
    int32_t asInt32() const;
    uint32_t asUInt32() const;
    double asDouble() const;
    float asFloat() const;
    // True when the whole text is one decimal integer that fits 32 bits (sign allowed).
    bool isInt32() const;
    // The same for 32 bits without sign, and for a real (no blanks before it, no word such as inf).
    bool isUInt32() const;
    bool isReal() const;

    bool equalsIgnoringCase(std::string_view other) const;
    Tstring replacingAll(char from, char to) const;
};

// The text with "\x1b" in the place of each control character (UTF-8's C1 ones, too): names and texts
// of files must not command a terminal.
Tstring printable(std::string_view text);

// Of the letters A to Z; every other byte stays.
char lowerCase(char c);

// One argument of a positional format: a text or an integer.
class FormatArgument {
 public:
    FormatArgument(const char* text) : text_(text) {}
    FormatArgument(const std::string& text) : text_(text) {}
    FormatArgument(int number) : text_(std::to_string(number)) {}
    FormatArgument(double number);
    const std::string& text() const { return text_; }

 private:
    std::string text_;
};

// Replaces "^1s", "^2d", "^3f" ... by the arguments in any order and number of times; "^^" is a
// caret. A placeholder without an argument stays as it is.
Tstring formatPositional(std::string_view format, std::initializer_list<FormatArgument> arguments);

// printf into a Tstring of any length.
[[gnu::format(printf, 1, 2)]] Tstring formatPrintf(const char* format, ...);

}  // namespace vistel

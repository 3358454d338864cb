#include "text_header.h"

#include <charconv>

namespace vistel {

namespace {

constexpr size_t longestWord = 80;

}  // namespace

std::string readLine(ByteSource& source) {
    std::string line;
    for (int byte = source.next(); byte >= 0 && byte != '\n'; byte = source.next())
        if (line.size() < longestWord) line.push_back(char(byte));
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

std::string readWord(ByteSource& source) {
    std::string word;
    for (int byte = source.next(); byte >= 0; byte = source.next()) {
        if (byte == '#') {
            readLine(source);
            if (!word.empty()) break;
        } else if (isBlank(byte)) {
            if (!word.empty()) break;
        } else if (word.size() < longestWord) {
            word.push_back(char(byte));
        }
    }
    return word;
}

bool parseNumber(const std::string& word, uint32_t& number) {
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && stop == end && number < 1u << 31;
}

bool readNumber(ByteSource& source, uint32_t& number) {
    return parseNumber(readWord(source), number);
}

}  // namespace vistel

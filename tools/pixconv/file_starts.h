// What a file is, told by its first bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace vistel {

inline bool startsWith(std::span<const uint8_t> bytes, std::string_view mark) {
    return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

}  // namespace vistel

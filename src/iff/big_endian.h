// Numbers in file order: the most significant byte first.
#pragma once

#include <cstdint>

namespace vistel {

inline uint16_t readBig16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline uint32_t readBig32(const uint8_t* bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

inline void writeBig16(uint8_t* bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

inline void writeBig32(uint8_t* bytes, uint32_t value) {
    writeBig16(bytes, static_cast<uint16_t>(value >> 16));
    writeBig16(bytes + 2, static_cast<uint16_t>(value));
}

}  // namespace vistel

// Numbers as files hold them: the most significant byte first (big-endian) or last (little-endian),
// at any address.
#pragma once

#include <cstdint>

namespace vistel {

constexpr uint16_t readBig16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

constexpr uint32_t readBig32(const uint8_t* bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

constexpr uint64_t readBig64(const uint8_t* bytes) {
    return uint64_t{readBig32(bytes)} << 32 | readBig32(bytes + 4);
}

constexpr uint16_t readLittle16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[1] << 8 | bytes[0]);
}

constexpr uint32_t readLittle32(const uint8_t* bytes) {
    return uint32_t{bytes[3]} << 24 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[1]} << 8 | bytes[0];
}

constexpr void writeBig16(uint8_t* bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

constexpr void writeBig32(uint8_t* bytes, uint32_t value) {
    writeBig16(bytes, static_cast<uint16_t>(value >> 16));
    writeBig16(bytes + 2, static_cast<uint16_t>(value));
}

constexpr void writeLittle16(uint8_t* bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value);
    bytes[1] = static_cast<uint8_t>(value >> 8);
}

constexpr void writeLittle32(uint8_t* bytes, uint32_t value) {
    writeLittle16(bytes, static_cast<uint16_t>(value));
    writeLittle16(bytes + 2, static_cast<uint16_t>(value >> 16));
}

}  // namespace vistel

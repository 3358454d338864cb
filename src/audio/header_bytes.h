// Headers of audio files as they are written: put together in memory, then written in one piece.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

#include "host/byte_order.h"
#include "platform/files.h"

namespace vistel {

// Up to 64 bytes; every function appends.
class HeaderBytes {
 public:
    HeaderBytes& text(std::string_view characters) {
        for (const char c : characters) bytes_[size_++] = static_cast<uint8_t>(c);
        return *this;
    }
    HeaderBytes& bytes(std::span<const uint8_t> values) {
        for (const uint8_t value : values) bytes_[size_++] = value;
        return *this;
    }
    HeaderBytes& u8(int32_t value) {
        bytes_[size_++] = static_cast<uint8_t>(value);
        return *this;
    }
    HeaderBytes& u16(int32_t value) {
        writeLittle16(bytes_ + size_, static_cast<uint16_t>(value));
        size_ += 2;
        return *this;
    }
    HeaderBytes& u32(int64_t value) {
        writeLittle32(bytes_ + size_, static_cast<uint32_t>(value));
        size_ += 4;
        return *this;
    }

    int size() const { return static_cast<int>(size_); }

    // How many bytes were written: all, or -1.
    int write(FILE* stream) const {
        return std::fwrite(bytes_, 1, size_, stream) == size_ ? size() : -1;
    }
    int writeAt(FILE* stream, int64_t place) const {
        return platform::seekStream(stream, place, SEEK_SET) ? write(stream) : -1;
    }

 private:
    uint8_t bytes_[64] = {};
    size_t size_ = 0;
};

// Whether so many bytes were written; else it is reported, with the name of the part.
[[nodiscard]] bool headerWritten(const char* operation, const char* part, int bytes, int result);

}  // namespace vistel

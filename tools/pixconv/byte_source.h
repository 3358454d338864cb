// Reading a source file: places in it, bytes of it, numbers in either byte order, and the sentences
// that tell what is missing. Sizes are known beforehand, so that a header can be checked against
// what the file holds before memory is taken for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "codec.h"
#include "host/byte_order.h"
#include "platform/files.h"

namespace vistel {

enum class ByteOrder { big, little };

inline uint16_t number16(const uint8_t* at, ByteOrder order) {
    return order == ByteOrder::big ? readBig16(at) : readLittle16(at);
}

inline uint32_t number32(const uint8_t* at, ByteOrder order) {
    return order == ByteOrder::big ? readBig32(at) : readLittle32(at);
}

class ByteSource {
 public:
    explicit ByteSource(const SourceFile& source) : file_(source.file), size_(source.size) {}

    uint64_t size() const { return size_; }
    uint64_t position() const { return position_; }
    uint64_t left() const { return size_ - position_; }

    // All of the bytes or false; after false the place is undefined.
    [[nodiscard]] bool read(void* to, size_t bytes) {
        if (bytes > left()) return false;
        if (bytes > 0 && std::fread(to, 1, bytes, file_) != bytes) return false;
        position_ += bytes;
        return true;
    }

    // The next byte, below 0 at the end.
    int next() {
        const int byte = left() > 0 ? std::fgetc(file_) : EOF;
        if (byte != EOF) ++position_;
        return byte;
    }

    // To a place from the file's start. False when the file does not reach as far.
    [[nodiscard]] bool goTo(uint64_t place) {
        if (place == position_) return true;
        if (place > size_ || !platform::seekStream(file_, int64_t(place), SEEK_SET)) return false;
        position_ = place;
        return true;
    }

 private:
    FILE* file_;
    uint64_t size_;
    uint64_t position_ = 0;
};

// The whole file in memory, for libraries that want it so.
inline Failure readWhole(const SourceFile& source, std::vector<uint8_t>& bytes) {
    if (source.size > mostPictureBytes) return "the file is too large";
    bytes.resize(source.size);
    if (std::fread(bytes.data(), 1, bytes.size(), source.file) != bytes.size())
        return "the file ends early";
    return {};
}

inline Failure endsInHeader() { return "the file ends early: in its header"; }

inline Failure endsInRow(uint32_t row, uint32_t rows) {
    return "the file ends early: row " + std::to_string(row + 1) + " of " + std::to_string(rows);
}

inline Failure damagedRow(uint32_t row, uint32_t rows) {
    return "the file is damaged: row " + std::to_string(row + 1) + " of " + std::to_string(rows);
}

// For layouts that store every row in the same number of bytes: none when all rows are there, else
// the first that is not. The last row may lack its padding.
inline Failure requireRows(uint64_t bytesThere, uint64_t rowBytes, uint64_t padding,
                           uint32_t rows) {
    const uint64_t stride = rowBytes + padding;
    if (bytesThere >= stride * (rows - 1) + rowBytes) return {};
    return endsInRow(uint32_t(bytesThere / stride), rows);
}

}  // namespace vistel

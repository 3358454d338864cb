// Writing a target file: blocks of bytes, and rows one after the other.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "codec.h"

namespace vistel {

// Why the system would not take bytes, by the error number of the write that failed.
inline std::string writingFailure(int error) {
    return error != 0 ? std::strerror(error) : "the file cannot be written";
}
// To be called right after that write.
inline Failure cannotWrite() { return writingFailure(errno); }

// All of an array's or vector's bytes.
template <class Bytes>
[[nodiscard]] bool writeAll(const TargetFile& target, const Bytes& bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), target.file) == bytes.size();
}

enum class RowOrder { topFirst, bottomFirst };

// Every row of a picture: fill(y, bytes) makes the bytes of row y in a vector that begins with
// `rowBytes` of them and keeps what the row before left there.
template <class Fill>
Failure writeRows(const TargetFile& target, const Picture& picture, RowOrder order, size_t rowBytes,
                  Fill&& fill) {
    std::vector<uint8_t> bytes(rowBytes);
    for (uint32_t i = 0; i < picture.height; ++i) {
        fill(order == RowOrder::topFirst ? i : picture.height - 1 - i, bytes);
        if (!writeAll(target, bytes)) return cannotWrite();
    }
    return {};
}

}  // namespace vistel

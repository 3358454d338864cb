// The bytes of a fuzz input as a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace vistel {

// A new empty file that goes when it is closed. Programs that run at the same time may be given the
// same name by the system; then another one is asked for.
inline FILE* freshFile() {
    for (int attempts = 0; attempts < 100; ++attempts)
        if (FILE* file = std::tmpfile()) return file;
    std::abort();
}

// One file for all inputs, at its start; a fresh one for an input that is shorter than the last.
inline FILE* fileOf(const uint8_t* data, size_t size) {
    static FILE* file = nullptr;
    static size_t longest = 0;
    if (!file || size < longest) {
        if (file) std::fclose(file);
        file = freshFile();
    }
    longest = size;
    std::rewind(file);
    if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
    std::rewind(file);
    return file;
}

}  // namespace vistel

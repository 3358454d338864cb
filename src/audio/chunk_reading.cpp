#include "audio/chunk_reading.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "audio/audio_errors.h"

namespace vistel {

PieceRead readPiece(FILE* stream, uint64_t size, std::vector<uint8_t>& piece) try {
    constexpr uint64_t block = 1 << 16;
    piece.clear();
    while (piece.size() < size) {
        const auto wanted = static_cast<size_t>(std::min(block, size - piece.size()));
        const size_t before = piece.size();
        piece.resize(before + wanted);
        if (std::fread(piece.data() + before, 1, wanted, stream) != wanted) return PieceRead::cut;
    }
    return PieceRead::whole;
} catch (const std::bad_alloc&) {
    return PieceRead::noMemory;
}

bool makeRoom(std::vector<uint8_t>& buffer, uint64_t bytes) try {
    buffer = {};  // what it holds is not to be copied
    buffer.resize(bytes);
    return true;
} catch (const std::bad_alloc&) {
    return false;
} catch (const std::length_error&) {
    return false;
}

char printable(uint8_t byte) { return byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.'; }

void reportSkipFailure(const char* operation) {
    AFreporterror(afChunkSkip, "%s: lseek returned %d when seeking to end of unsupported chunk\n",
                  operation, -1);
}

void reportUnknownChunk(const char* operation, const uint8_t id[4]) {
    AFreporterror(afUnknownChunk, "%s: failed to parse chunk with id 0x%02x%02x%02x%02x=%c%c%c%c\n",
                  operation, id[0], id[1], id[2], id[3], printable(id[0]), printable(id[1]),
                  printable(id[2]), printable(id[3]));
}

}  // namespace vistel

// Reading pieces of audio files of which nothing is known yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace vistel {

enum class PieceRead { whole, cut, noMemory };

// Reads `size` bytes. Memory is taken as the bytes arrive: a size that the file does not hold takes
// none.
PieceRead readPiece(FILE* stream, uint64_t size, std::vector<uint8_t>& piece);

// Gives the buffer so many bytes, of any value; false, and an empty buffer, when there is no
// memory.
[[nodiscard]] bool makeRoom(std::vector<uint8_t>& buffer, uint64_t bytes);

// A byte of a chunk's name as it can be printed.
char printable(uint8_t byte);

// Report that a chunk could not be skipped, and that one of this name is not known.
void reportSkipFailure(const char* operation);
void reportUnknownChunk(const char* operation, const uint8_t id[4]);

}  // namespace vistel

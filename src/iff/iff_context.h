// What the container's reader and writer share: identifiers, special sizes, the group table.
//
//  offset  width  chunk header, at the start of every chunk and group
//       0      4  identifier, four characters
//       4      4  size of the body that follows, big-endian
//       8      4  groups only: type of the group; it counts as part of the body
//
// A body is followed by pad bytes up to the alignment of the group that holds the chunk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vistel {

// The number of a four-character identifier: its bytes as a big-endian value. Positive for plain
// characters, so it can share a return value with the negative result codes.
constexpr int32_t iffId(const char (&text)[5]) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(text[i]);
    return static_cast<int32_t>(value);
}

constexpr size_t iffHeaderSize = 8;
constexpr int32_t iffGroupEndId = iffId("GEND");      // closes a group of unknown size
constexpr int32_t iffChunkEndMarker = iffId("EOVC");  // closes a chunk of size iffSizeStreamed

// Sizes with the top bit set are not sizes.
constexpr uint32_t iffSizeUnknownBit = 0x80000000;
constexpr uint32_t iffSizeUnknown = 0x80000000;  // not known when the header was written
constexpr uint32_t iffSizePatched = 0x80000001;  // a writer patches it in place when the chunk ends
constexpr uint32_t iffSizeStreamed = 0x80000002;       // never patched: runs to an end marker
constexpr uint32_t iffSizeForbiddenBits = 0x7FFFFFFC;  // with the top bit: no such size
constexpr uint64_t iffRootEnd = 0xFFFFFFF0;            // end position of the root
constexpr uint32_t iffMaxDepth = 512;                  // deeper nesting is refused

constexpr bool iffSizeKnown(uint32_t size) { return (size & iffSizeUnknownBit) == 0; }
// `size` rounded up by an alignment mask (0, 1, 3 or 7).
constexpr uint64_t iffRoundUp(uint64_t size, uint32_t mask) {
    return (size + mask) & ~uint64_t{mask};
}

enum IffFlag : uint32_t {
    iffFlagReading = 0x1,
    iffFlagWriting = 0x2,
    iffFlagStream = 0x10,  // not seekable: a pipe or a console
    // The current chunk:
    iffFlagGroup = 0x100,
    iffFlagMayHoldProperties = 0x200,  // set with the list kind
    iffFlagForm = 0x400,
    iffFlagConcatenation = 0x800,
    iffFlagList = 0x1000,
    iffFlagProperty = 0x2000,
    iffFlagsOfChunk = 0x3F00,
};

enum class IffGroupKind { form, concatenation, list, property, reserved };

struct IffGroupRow {
    int32_t id;
    IffGroupKind kind;
    uint32_t alignMask;   // of the starts of the chunks in the group
    uint32_t chunkFlags;  // what a reader positioned on it has in its flags
};

// The 14 group identifiers; tests go through them.
std::span<const IffGroupRow> iffGroupTable();
// The row of an identifier; null for a plain chunk.
const IffGroupRow* findIffGroup(int32_t id);

}  // namespace vistel

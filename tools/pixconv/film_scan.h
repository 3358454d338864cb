// What the two file types of film scanners share: rows of code values of 8, 10, 12 or 16 bits,
// which may be packed into 32-bit words. Whether codes are logarithmic is not looked at: they are
// only widened to 8 or 16 bits, and the viewer's own option converts them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "samples.h"

namespace vistel {

// How the code values of a row lie in its bytes. Every row starts a 32-bit word.
enum class CodePacking {
    bytes,       // 8 bits each, in order
    words,       // a 16-bit word each, the code in its low bits
    highWords,   // a 16-bit word each, the code in its high bits
    filledHigh,  // three of 10 bits in a word, the first one highest, the two lowest bits unused
    filledLow,   // the same with the two highest bits unused
    filledHighReversed,  // as filledHigh, but the first one lowest
    filledLowReversed,
    continuous,  // no bits unused; the first one in a word's low bits
};

struct CodeLayout {
    CodePacking packing;
    uint32_t bits;  // 8, 10, 12, 16
    ByteOrder order;
};

// Bytes of a row of so many codes, with and without what fills its last 32-bit word.
uint64_t codeRowBytes(const CodeLayout& layout, uint64_t codes);
uint64_t shortCodeRowBytes(const CodeLayout& layout, uint64_t codes);

// Takes all codes of a row from its bytes. There are as many bytes as codeRowBytes says, or as
// shortCodeRowBytes does.
void unpackCodes(const CodeLayout& layout, std::span<const uint8_t> bytes,
                 std::span<uint16_t> codes);

// The code of 10 bits for sample i of row y.
using CodeOf = uint16_t (*)(const Picture& picture, uint32_t y, size_t sample);
uint16_t tenBitsOf(const Picture& picture, uint32_t y, size_t sample);  // the nearest one

// Writes a header and colour in codes of 10 bits: each pixel a big-endian word, left-justified.
Failure writeTenBitColour(const TargetFile& target, std::span<const uint8_t> header,
                          const Picture& picture, CodeOf codeOf);

// One image of a file: rows of codes, `order.channels` for each pixel.
struct CodePlane {
    uint64_t place = 0;    // of the first row
    uint64_t padding = 0;  // bytes between rows
    uint64_t end = 0;      // behind the last row and its padding; set by requireCodes
    CodeLayout layout{};
    ChannelOrder order{};
};

// Checks that all rows of a picture of this size are there, and completes the plane. Some programs
// do not fill the last word of a row: where the file may be of those (it is not said to be longer
// than it is) and the rows are only there without the filling, they are read like that. After a
// failure the rows that are there can be read.
Failure requireCodes(const ByteSource& source, const Picture& picture, bool maybeShort,
                     CodePlane& plane);

// Reads the rows of a plane: 8 bits as they are, or into a wide picture as 16.
Failure readCodes(ByteSource& source, const CodePlane& plane, Picture& picture);

}  // namespace vistel

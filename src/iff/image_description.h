// The texts of the verbose report: one line for each chunk, and what its content says.
#pragma once

#include <cstdint>
#include <string>

#include "iff/frame_store.h"
#include "iff/image_header.h"

namespace vistel {

// "640x480 Color RLE, 8 bits with Mask, ZBuf, 80 tiles". The word Mask stays in an image that has
// none: such an image reads "without Mask", one without colour data just "Mask".
std::string describeImage(const ImageHeader& header);

// "x1:    0  y1:    0  x2:   63  y2:   63".
std::string describeTile(const TileRect& rect);

// The header of a chunk: a full stop for each nesting level, the identifier, the size (or the words
// for a size that is not known), the type of a group (0: a plain chunk). No line end.
std::string listingLine(uint32_t depth, int32_t id, uint32_t size, int32_t groupType);

// What follows a plain chunk's listing line: the text behind four blanks, cut to 255 characters, or
// only a line end when there is none.
std::string contentLine(const std::string& text);

// The format of an embedded sound ("COMM").
//
//  offset  width  field (big-endian)
//       0      2  channels
//       2      4  sample frames
//       6      2  sample size, bits
//       8     10  sample rate, 80-bit extended
//      18      4  compression type; only in a body longer than 18 bytes
//      22      1  length of the compression's name, which follows
struct SoundFormat {
    static constexpr size_t shortBody = 18;
    static constexpr size_t typedBody = 22;  // with a compression type
    static constexpr size_t longBody = 23;   // and an empty name

    uint16_t channels = 0;
    uint32_t sampleFrames = 0;
    uint16_t sampleBits = 0;
    float rate = 0;               // samples per second
    std::string compressionName;  // empty for a short body
    bool usable = false;          // a short body, or compression "NONE"
};
// Decodes a body of at least 18 bytes; more than 18 but fewer than 22 count as 18 without being
// usable. The name is cut at the end of the body.
SoundFormat decodeSoundFormat(const uint8_t* body, size_t size);
// "44100 Samples, 16 Bits Stereo, 44.1KHz     ".
std::string describeSound(const SoundFormat& format);

// An 80-bit extended number as a 32-bit float; infinities and NaNs become 1.0e30 with their sign.
float floatFromExtended(const uint8_t* bytes);

}  // namespace vistel

// What a JPEG file tells beside the picture, in the segments before its first scan.
#pragma once

#include <cstdint>
#include <span>

#include "codec.h"

namespace vistel {

// As cameras write it: 1 to 8 (turned.h). 1 when none can be read. The stream is at its start
// afterwards.
int orientationOfJpeg(const SourceFile& source);

// The same, from the body of an APP1 segment.
int orientationOfExif(std::span<const uint8_t> body);

}  // namespace vistel

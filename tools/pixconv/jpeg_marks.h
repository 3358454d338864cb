// What a JPEG file tells beside the picture, in the segments before its first scan.
#pragma once

#include <cstdint>
#include <span>

#include "codec.h"

namespace vistel {

struct JpegMarks {
    int orientation = 1;        // 1 to 8 (turned.h), as cameras write it
    int channels = 0;           // 0: not told
    bool inksInverted = false;  // the mark of the inks' first user: 255 is none
};

// The stream is at its start afterwards. What cannot be read is taken as not told.
JpegMarks marksOfJpeg(const SourceFile& source);

// From the body of an APP1 segment: 1 to 8. 1 when it holds no readable orientation.
int orientationOfExif(std::span<const uint8_t> body);

}  // namespace vistel

// What kind of picture file a name stands for, told by its first bytes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace vistel {

enum FileKind : int {
    fileKindUnreadable = -1,  // cannot be opened or read
    fileKindOther = 0,
    fileKindRaster1 = 1,  // the rasters of the older converter, by the number in the file
    fileKindRaster2 = 2,
    fileKindRaster3 = 3,
    fileKindImage = 4,      // a form whose type begins "CIM"
    fileKindImageList = 5,  // a list or concatenation of that type
    fileKindContainer = 6,  // a group of another type
    fileKindPacked = 7,     // 01 DA 01 01
    fileKindOldRaster = 8,  // 02 4A 02 0A
};

// The kind of a file. "stdin", in any case, is standard input, which stays open and gets back the
// bytes that were read (see probeStream).
int probeFileKind(const std::string& name);

// Whether a file that starts so, with 12 bytes at least, is of kind fileKindImage or
// fileKindImageList.
bool startsAsImage(std::span<const uint8_t> start);

// The kind of what a stream holds from its position on; reads up to 12 bytes. With pushBack the
// words of four bytes that were read are pushed back, for a container in the order size, type,
// first word: the next reader meets the first word, the type, the size. A failed push-back gives
// -1.
int probeStream(FILE* stream, bool pushBack);

}  // namespace vistel

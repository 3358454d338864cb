// A TIFF file as its library sees it: a stream that it reads and writes through, and what it
// reports.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <cstdio>
#include <memory>

#include "picture.h"

namespace vistel {

// What the library may take at once for a strip or a tile, however large the file.
inline constexpr uint64_t mostTiffBlockBytes = 256 << 20;

struct TiffStream {
    FILE* file;
    uint64_t size = 0;                        // bytes of a file that is read
    uint64_t mostBlock = mostTiffBlockBytes;  // that the library may take at once
    // The library gives up a strip or tile that is not whole. While this is set, what the file
    // lacks is taken for zeros, up to a hundred times its size, and `cut` tells so.
    bool zerosBehind = false;
    bool cut = false;
    uint64_t zeros = 0;     // bytes made up
    char report[240] = "";  // the library's first text
    // The first error of a write: the library goes on with others, and only says that it failed.
    int writeError = 0;
};

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffCloser>;

// `mode` as TIFFOpen; null on failure. The stream outlives the file.
TiffPtr openTiff(TiffStream& stream, const char* mode);

// What went wrong, by the library's report.
Failure tiffFailure(const TiffStream& stream);

// Names a packing that this build's library does not read; none when it does.
Failure unknownTiffPacking(TIFF* tiff);

}  // namespace vistel

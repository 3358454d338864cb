// TIFF pictures that are read row by row and kept as they are stored: grey, colour and the four
// inks.
#pragma once

#include <tiffio.h>

#include <cstddef>
#include <cstdint>

#include "picture.h"
#include "tiff_file.h"

namespace vistel {

struct TiffLayout {
    uint32_t width = 0, height = 0;
    uint16_t bits = 1, samples = 1, format = SAMPLEFORMAT_UINT,
             photometric = PHOTOMETRIC_MINISBLACK;
    uint16_t planar = PLANARCONFIG_CONTIG, orientation = ORIENTATION_TOPLEFT;
    uint16_t compression = COMPRESSION_NONE;
    bool tiled = false;
    bool fourInks = false;   // cyan, magenta, yellow, black
    bool extraMask = false;  // the first channel behind the colours is called a mask

    bool grey() const {
        return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
    }
    uint16_t colours() const { return grey() ? 1 : fourInks ? 4 : 3; }
    bool separate() const { return planar == PLANARCONFIG_SEPARATE; }
    bool floats() const { return format == SAMPLEFORMAT_IEEEFP; }
    bool wholeNumbers() const { return format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_INT; }
    // Whether the rows can be taken as they are.
    bool plain() const;
    bool wide() const { return !floats() && bits > 8; }
    // A fifth channel may be an ink too.
    bool mask() const { return samples > colours() && (extraMask || !fourInks); }
};

TiffLayout tiffLayoutOf(TIFF* tiff);

// Fills a picture of the layout's size and width of samples. Of a cut file the rows that are there.
[[nodiscard]] Failure readPlainTiff(TIFF* tiff, const TiffLayout& layout, TiffStream& stream,
                                    Picture& picture);

}  // namespace vistel

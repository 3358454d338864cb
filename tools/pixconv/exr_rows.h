// Rows of an OpenEXR file's channels on their way into a picture.
#pragma once

#include <ImfInputFile.h>

#include <cstdint>
#include <vector>

#include "exr_channels.h"
#include "picture.h"

namespace vistel {

// One channel's floats over the width of the data window. A channel of lower resolution has one for
// each `step` columns, and a new row every `rowStep` rows.
struct ExrRow {
    std::vector<float> values;
    uint32_t step = 1, rowStep = 1;
    float scale = 1;  // whole numbers are shares of the largest one
    float at(size_t column) const { return values[column / step] * scale; }
};

struct ExrRows {
    ExrRow sample[4], depth;  // red (or grey), green, blue, mask
};

// The columns and rows that the data window and the picture, the display window, have in common.
struct ExrPlace {
    int64_t shift;     // of the data window's first column, in the picture
    int64_t from, to;  // columns of the picture
    int first, last;   // rows of the file
    int top;           // the picture's first row in the file

    explicit ExrPlace(const Imf::Header& header);
    uint32_t rowOf(int y) const { return uint32_t(int64_t{y} - top); }
};

// Puts a row of floats where it belongs: colour by the sRGB curve, the mask and depth as they are.
void storeExrRow(const ExrRows& rows, const ExrPlace& place, uint32_t y, Picture& picture);

// Reads all rows that can be read: those of a damaged or missing block (`blockRows` rows) stay
// black. The failure is that of the first one.
[[nodiscard]] Failure readExrRows(Imf::InputFile& file, const ExrChannels& names,
                                  uint64_t blockRows, Picture& picture);

// The same for colour that is stored as luminance and chroma; the mask comes along, depth does not.
[[nodiscard]] Failure readLuminanceChroma(Imf::IStream& input, const ExrChannels& names,
                                          Picture& picture);

}  // namespace vistel

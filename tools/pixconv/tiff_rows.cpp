#include "tiff_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

#include "inks.h"
#include "samples.h"

namespace vistel {

namespace {

float floatFromHalf(uint16_t half) {
    const uint32_t sign = uint32_t{half & 0x8000u} << 16;
    const uint32_t exponent = half >> 10 & 31, fraction = half & 1023;
    if (exponent == 0) {
        const float small = static_cast<float>(fraction) / 16777216.0f;
        return sign ? -small : small;
    }
    const uint32_t widened = exponent == 31 ? 255 : exponent + 112;
    return std::bit_cast<float>(sign | widened << 23 | fraction << 13);
}

template <class Number>
Number numberAt(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

float floatAt(const uint8_t* bytes, uint16_t bits) {
    if (bits == 16) return floatFromHalf(numberAt<uint16_t>(bytes));
    return bits == 32 ? numberAt<float>(bytes) : static_cast<float>(numberAt<double>(bytes));
}

// `bits` (at most 32) from a place counted in bits, the highest first.
uint32_t bitsAt(const uint8_t* bytes, size_t place, uint32_t bits) {
    uint64_t held = 0;
    uint32_t count = 0;
    for (const uint8_t* at = bytes + place / 8; count < bits + place % 8; count += 8)
        held = held << 8 | *at++;
    return uint32_t(held >> (count - bits - place % 8) & ((uint64_t{1} << bits) - 1));
}

uint32_t wholeNumberAt(const uint8_t* bytes, size_t place, uint32_t bits) {
    switch (bits) {
        case 8:
            return bytes[place / 8];
        case 16:
            return numberAt<uint16_t>(bytes + place / 8);
        case 32:
            return numberAt<uint32_t>(bytes + place / 8);
        case 24: {  // in this machine's order too
            const uint8_t* at = bytes + place / 8;
            return at[0] | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16;
        }
        default:
            return bitsAt(bytes, place, bits);
    }
}

struct Reader {
    TIFF* tiff;
    const TiffLayout& layout;
    TiffStream& stream;
    Picture& picture;
    std::vector<uint8_t> room;
    uint32_t channels;  // that are read

    // Of the picture's four samples the one that a channel of the file goes to: the fourth ink
    // stands in the mask's place until it is worked in.
    int sampleOf(uint32_t channel) const {
        if (layout.grey()) return channel == 0 ? 0 : 3;
        return channel < 4 ? int(channel) : 3;
    }
};

struct Run {
    uint32_t x, y, count;
};

// Whole numbers `step` bits apart to one sample of each pixel.
template <class Sample>
void storeNumbers(const TiffLayout& layout, const uint8_t* from, size_t place, size_t step,
                  Sample* to, uint32_t count, bool turned) {
    constexpr uint32_t full = std::numeric_limits<Sample>::max();
    const uint32_t bits = layout.bits;
    const uint32_t most = uint32_t((uint64_t{1} << bits) - 1);
    const uint32_t zero = layout.format == SAMPLEFORMAT_INT ? 1u << (bits - 1) : 0;
    for (; count > 0; --count, to += 4, place += step) {
        uint32_t code = (wholeNumberAt(from, place, bits) + zero) & most;
        if (turned) code = most - code;
        if (bits > 16)
            code >>= bits - 16;
        else if (most != full)
            code = rescaled(code, most, full);
        *to = Sample(code);
    }
}

// The samples of one channel.
void storeChannel(Reader& reader, const uint8_t* row, size_t place, size_t step, const Run& run,
                  int sample) {
    const TiffLayout& layout = reader.layout;
    Picture& picture = reader.picture;
    const size_t first = size_t{run.x} * 4 + size_t(sample);
    const bool turned = layout.photometric == PHOTOMETRIC_MINISWHITE && sample == 0;
    if (layout.floats()) {
        const auto byteOf = sample == 3 ? byteFromMask : byteFromLinear;
        uint8_t* to = picture.row(run.y) + first;
        for (uint32_t i = 0; i < run.count; ++i, to += 4)
            *to = byteOf(floatAt(row + (place + i * step) / 8, layout.bits));
    } else if (picture.wide) {
        storeNumbers(layout, row, place, step, picture.wideRow(run.y) + first, run.count, turned);
    } else {
        storeNumbers(layout, row, place, step, picture.row(run.y) + first, run.count, turned);
    }
}

void workInBlack(Picture& picture, const Run& run) {
    const size_t first = size_t{run.x} * 4;
    if (picture.wide)
        lightOfInks(picture.wideRow(run.y) + first, run.count, uint16_t{0});
    else
        lightOfInks(picture.row(run.y) + first, run.count, uint8_t{0});
}

void storeChannels(Reader& reader, const uint8_t* row, const Run& run, uint32_t firstChannel,
                   uint32_t channels) {
    const TiffLayout& layout = reader.layout;
    const size_t step = size_t{layout.bits} * (layout.separate() ? 1 : layout.samples);
    for (uint32_t i = 0; i < channels; ++i) {
        const uint32_t channel = firstChannel + i;
        storeChannel(reader, row, size_t{i} * layout.bits, step, run, reader.sampleOf(channel));
        if (layout.fourInks && channel == 3) workInBlack(reader.picture, run);
    }
}

// A run of pixels of a strip's or tile's row; `plane` is the one that it holds of a file that keeps
// its channels apart.
void storePixels(Reader& reader, const uint8_t* row, const Run& run, uint16_t plane) {
    if (reader.layout.separate())
        storeChannels(reader, row, run, plane, 1);
    else
        storeChannels(reader, row, run, 0, reader.channels);
}

// The row behind the last one that the file holds of a strip that it does not hold as a whole. Of a
// packed strip nobody knows; as much of the rows as of the bytes, about.
uint32_t endOfCutStrip(const Reader& reader, uint32_t y, uint16_t plane) {
    uint32_t stripRows = 0;
    TIFFGetFieldDefaulted(reader.tiff, TIFFTAG_ROWSPERSTRIP, &stripRows);
    stripRows = std::clamp<uint32_t>(stripRows, 1, reader.layout.height);
    const uint32_t strip = TIFFComputeStrip(reader.tiff, y, plane);
    const uint32_t first = y / stripRows * stripRows;
    const uint64_t place = TIFFGetStrileOffset(reader.tiff, strip);
    const uint64_t bytes = TIFFGetStrileByteCount(reader.tiff, strip);
    if (place >= reader.stream.size || bytes == 0) return first;
    const uint64_t there = std::min(reader.stream.size - place, bytes);
    const uint64_t rows = std::min(stripRows, reader.layout.height - first);
    return first + uint32_t(double(rows) * double(there) / double(bytes));
}

bool readStrips(Reader& reader, uint16_t plane) {
    const TiffLayout& layout = reader.layout;
    uint32_t end = layout.height;
    for (uint32_t y = 0; y < end; ++y) {
        if (TIFFReadScanline(reader.tiff, reader.room.data(), y, plane) < 0) return false;
        if (reader.stream.cut && end == layout.height) end = endOfCutStrip(reader, y, plane);
        if (y >= end) break;
        storePixels(reader, reader.room.data(), {0, y, layout.width}, plane);
        reader.picture.rowsRead = std::max(reader.picture.rowsRead, y + 1);
    }
    return !reader.stream.cut;
}

bool readTiles(Reader& reader, uint16_t plane) {
    const TiffLayout& layout = reader.layout;
    uint32_t width = 0, height = 0;
    TIFFGetField(reader.tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(reader.tiff, TIFFTAG_TILELENGTH, &height);
    if (width == 0 || height == 0) return false;
    const size_t rowBytes = static_cast<size_t>(TIFFTileRowSize(reader.tiff));
    for (uint64_t top = 0; top < layout.height; top += height)
        for (uint64_t left = 0; left < layout.width; left += width) {
            const auto x = static_cast<uint32_t>(left), y = static_cast<uint32_t>(top);
            if (TIFFReadTile(reader.tiff, reader.room.data(), x, y, 0, plane) < 0) return false;
            const uint32_t columns = std::min(width, layout.width - x);
            const uint32_t rows = std::min(height, layout.height - y);
            for (uint32_t i = 0; i < rows; ++i)
                storePixels(reader, reader.room.data() + i * rowBytes, {x, y + i, columns}, plane);
            if (reader.stream.cut) return false;
            if (left + width >= layout.width)
                reader.picture.rowsRead = std::max(reader.picture.rowsRead, y + rows);
        }
    return true;
}

// Of a file that keeps its channels apart, a cut one may end before black has been worked in.
void showInks(Picture& picture) {
    for (uint32_t y = 0; y < picture.rowsRead; ++y) workInBlack(picture, {0, y, picture.width});
}

}  // namespace

bool TiffLayout::plain() const {
    if (!grey() && !fourInks && (photometric != PHOTOMETRIC_RGB || samples < 3)) return false;
    if (floats()) return !fourInks && (bits == 16 || bits == 32 || bits == 64);
    // Lines and faxes of one bit are left to the library.
    return wholeNumbers() && bits > 1 && bits <= 32;
}

TiffLayout tiffLayoutOf(TIFF* tiff) {
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    if (layout.format == SAMPLEFORMAT_VOID) layout.format = SAMPLEFORMAT_UINT;
    layout.tiled = TIFFIsTiled(tiff) != 0;
    uint16_t inks = INKSET_CMYK, extra = 0;
    uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &inks);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extra, &kinds);
    layout.fourInks =
        layout.photometric == PHOTOMETRIC_SEPARATED && inks == INKSET_CMYK && layout.samples >= 4;
    layout.extraMask = extra > 0 && kinds[0] != EXTRASAMPLE_UNSPECIFIED;
    return layout;
}

Failure readPlainTiff(TIFF* tiff, const TiffLayout& layout, TiffStream& stream, Picture& picture) {
    picture.colour = !layout.grey();
    picture.mask = layout.mask();
    const uint64_t block = layout.tiled ? TIFFTileSize64(tiff) : TIFFScanlineSize64(tiff);
    if (block == 0) return tiffFailure(stream);
    if (block > stream.mostBlock) return "a strip or tile of the file is too large";
    const uint32_t channels = layout.colours() + (picture.mask ? 1u : 0u);
    Reader reader{tiff, layout, stream, picture, {}, channels};
    reader.room.resize(block);
    stream.zerosBehind = true;
    const uint32_t planes = layout.separate() ? channels : 1;
    for (uint16_t plane = 0; plane < planes; ++plane) {
        if (layout.tiled ? readTiles(reader, plane) : readStrips(reader, plane)) continue;
        if (layout.fourInks && layout.separate() && plane < 4 && picture.partIsThere())
            showInks(picture);
        return tiffFailure(stream);
    }
    return {};
}

}  // namespace vistel

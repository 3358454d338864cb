// TIFF by libtiff. Grey, colour and inks of up to 32 bits and of floating point numbers are read
// row by row and kept as they are stored (tiff_rows.h); all other layouts (palettes, one bit,
// YCbCr) go through the library's conversion to 8-bit pixels.

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "byte_target.h"
#include "codecs.h"
#include "packed_rows.h"
#include "tiff_file.h"
#include "tiff_rows.h"
#include "turned.h"

namespace vistel {

namespace {

// What a pixel may hold.
constexpr uint16_t mostSamples = 64;

bool recognises(std::span<const uint8_t> start) {
    if (start.size() < 4) return false;
    for (const char* mark : {"II\x2a\0", "MM\0\x2a", "II\x2b\0", "MM\0\x2b"})
        if (std::memcmp(start.data(), mark, 4) == 0) return true;
    return false;
}

// The library would multiply colour by a mask that the file does not call multiplied: it is told
// that this was done. Tells how many channels there are besides the colours.
uint16_t keepColourAsStored(TIFF* tiff) {
    uint16_t extra = 0;
    uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extra, &kinds);
    std::vector<uint16_t> multiplied(kinds, kinds + extra);
    std::replace(multiplied.begin(), multiplied.end(), uint16_t{EXTRASAMPLE_UNASSALPHA},
                 uint16_t{EXTRASAMPLE_ASSOCALPHA});
    if (extra > 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, extra, multiplied.data());
    return extra;
}

// Rows that the library has put into the picture: all that it puts there is opaque, but for masks.
uint32_t rowsThere(const Picture& picture) {
    uint32_t end = picture.height;
    const auto empty = [&](uint32_t y) {
        const uint8_t* row = picture.row(y);
        return std::all_of(row, row + picture.rowSamples(), [](uint8_t byte) { return byte == 0; });
    };
    while (end > 0 && empty(end - 1)) --end;
    return end;
}

Failure readConverted(TIFF* tiff, const TiffLayout& layout, TiffStream& stream, Picture& picture) {
    const uint16_t extra = keepColourAsStored(tiff);
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(tiff, reason)) return std::string(reason);
    // As it is stored: it is turned upright afterwards.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    static_assert(std::endian::native == std::endian::little, "red is the lowest byte");
    auto* pixels = reinterpret_cast<uint32_t*>(picture.samples.data());
    picture.mask = extra > 0;
    picture.colour = !layout.grey();
    if (TIFFReadRGBAImageOriented(tiff, layout.width, layout.height, pixels, ORIENTATION_TOPLEFT,
                                  1))
        return {};
    picture.rowsRead = rowsThere(picture);
    return tiffFailure(stream);
}

Failure read(const SourceFile& source, Picture& picture) {
    TiffStream stream{source.file, source.size, std::min(mostTiffBlockBytes, picture.mostBytes)};
    const TiffPtr tiff = openTiff(stream, "rm");
    if (!tiff) return tiffFailure(stream);
    if (Failure failure = unknownTiffPacking(tiff.get())) return failure;
    const TiffLayout layout = tiffLayoutOf(tiff.get());
    if (layout.samples > mostSamples)
        return "pixels of " + std::to_string(layout.samples) + " channels cannot be read";
    if (layout.format == SAMPLEFORMAT_COMPLEXINT || layout.format == SAMPLEFORMAT_COMPLEXIEEEFP)
        return "TIFF files of complex numbers are not supported";
    const bool plain = layout.plain();
    if (Failure failure = picture.allocate(layout.width, layout.height, plain && layout.wide()))
        return failure;
    const Failure failure = plain ? readPlainTiff(tiff.get(), layout, stream, picture)
                                  : readConverted(tiff.get(), layout, stream, picture);
    return completed(picture, failure, layout.orientation);
}

// --- writing ---

void setFields(TIFF* tiff, const Picture& picture) {
    const int channels = channelsOf(picture);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.wide ? 16 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 picture.colour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    // Not said to be multiplied, whatever it is: other programs then leave the colours alone.
    const uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    if (picture.mask) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
}

Failure write(const Picture& picture, const TargetFile& target) {
    TiffStream stream{target.file};
    const TiffPtr tiff = openTiff(stream, "w");
    bool written = tiff != nullptr;
    if (written) setFields(tiff.get(), picture);
    std::vector<uint16_t> room(picture.rowSamples());
    auto* bytes = reinterpret_cast<uint8_t*>(room.data());
    for (uint32_t y = 0; written && y < picture.height; ++y) {
        if (picture.wide)
            packRow(picture.wideRow(y), picture.width, channelsOf(picture), room.data());
        else
            packRow(picture.row(y), picture.width, channelsOf(picture), bytes);
        written = TIFFWriteScanline(tiff.get(), room.data(), y, 0) >= 0;
    }
    if (written && TIFFFlush(tiff.get())) return {};
    if (stream.writeError != 0 || stream.report[0] == 0) return writingFailure(stream.writeError);
    return "the picture cannot be packed: " + std::string(stream.report);
}

}  // namespace

const Codec tiffCodec = {"tiff", recognises, read, write};

}  // namespace vistel

// TIFF by libtiff. Grey and colour of 8, 16 and 32 bits and of floating point numbers are read row
// by row and kept as they are stored; all other layouts (palettes, inks, fewer than 8 bits, YCbCr)
// go through the library's conversion to 8-bit pixels.

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "byte_target.h"
#include "codecs.h"
#include "packed_rows.h"
#include "platform/files.h"
#include "samples.h"
#include "turned.h"

namespace vistel {

namespace {

// What the library may take at once for a strip or a tile, however large the file, and what a pixel
// may hold.
constexpr uint64_t mostBlockBytes = 256 << 20;
constexpr uint16_t mostSamples = 64;

// --- the file as the library sees it ---

// With the first error of a write: the library goes on with others, and only says that it failed.
struct Stream {
    FILE* file;
    uint64_t mostBlock = mostBlockBytes;
    int writeError = 0;
};

FILE* streamOf(thandle_t handle) { return static_cast<Stream*>(handle)->file; }

void noteWriteError(thandle_t handle) {
    int& error = static_cast<Stream*>(handle)->writeError;
    if (error == 0) error = errno;
}

tmsize_t readBytes(thandle_t handle, void* bytes, tmsize_t size) {
    const size_t n = std::fread(bytes, 1, static_cast<size_t>(size), streamOf(handle));
    return static_cast<tmsize_t>(n);
}

tmsize_t writeBytes(thandle_t handle, void* bytes, tmsize_t size) {
    const size_t n = std::fwrite(bytes, 1, static_cast<size_t>(size), streamOf(handle));
    if (n != static_cast<size_t>(size)) noteWriteError(handle);
    return static_cast<tmsize_t>(n);
}

toff_t seek(thandle_t handle, toff_t offset, int origin) {
    FILE* file = streamOf(handle);
    constexpr auto failed = static_cast<toff_t>(-1);
    if (origin == SEEK_SET && offset > INT64_MAX) return failed;
    if (!platform::seekStream(file, static_cast<int64_t>(offset), origin)) {
        noteWriteError(handle);  // of what was held back
        return failed;
    }
    return static_cast<toff_t>(platform::streamPosition(file));
}

toff_t sizeOf(thandle_t handle) {
    FILE* file = streamOf(handle);
    std::fflush(file);
    return platform::streamStatus(file).size;
}

int closeNothing(thandle_t) { return 0; }

struct Report {
    char text[240] = "";
};

// The first text: what follows only says that it could not go on.
int onError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
    auto* report = static_cast<Report*>(user);
    if (report->text[0] == 0) std::vsnprintf(report->text, sizeof report->text, format, arguments);
    return 1;
}

int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, Closer>;

// The stream is to outlive what is returned.
TiffPtr open(Stream& stream, const char* mode, Report& report) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (!options) return {};
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(stream.mostBlock));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &report);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
    return TiffPtr(TIFFClientOpenExt("", mode, &stream, readBytes, writeBytes, seek, closeNothing,
                                     sizeOf, nullptr, nullptr, options.get()));
}

Failure failureOf(const Report& report) {
    if (report.text[0] == 0) return "the file is damaged";
    return "the file is damaged: " + std::string(report.text);
}

bool recognises(std::span<const uint8_t> start) {
    if (start.size() < 4) return false;
    for (const char* mark : {"II\x2a\0", "MM\0\x2a", "II\x2b\0", "MM\0\x2b"})
        if (std::memcmp(start.data(), mark, 4) == 0) return true;
    return false;
}

// --- what the file holds ---

struct Layout {
    uint32_t width = 0, height = 0;
    uint16_t bits = 1, samples = 1, format = SAMPLEFORMAT_UINT,
             photometric = PHOTOMETRIC_MINISBLACK;
    uint16_t planar = PLANARCONFIG_CONTIG, orientation = ORIENTATION_TOPLEFT;
    bool tiled = false;

    bool grey() const {
        return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
    }
    bool separate() const { return planar == PLANARCONFIG_SEPARATE; }
    bool floats() const { return format == SAMPLEFORMAT_IEEEFP; }
    size_t sampleBytes() const { return bits / 8; }
    // Whether the rows can be taken as they are.
    bool plain() const {
        if (!grey() && (photometric != PHOTOMETRIC_RGB || samples < 3)) return false;
        if (floats()) return bits == 16 || bits == 32 || bits == 64;
        return format == SAMPLEFORMAT_UINT && (bits == 8 || bits == 16 || bits == 32);
    }
    bool wide() const { return !floats() && bits > 8; }
    bool mask() const { return samples > (grey() ? 1 : 3); }
};

Layout layoutOf(TIFF* tiff) {
    Layout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    if (layout.format == SAMPLEFORMAT_VOID) layout.format = SAMPLEFORMAT_UINT;
    layout.tiled = TIFFIsTiled(tiff) != 0;
    return layout;
}

// --- samples ---

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

// `count` samples, `step` bytes apart, to one sample of as many pixels from column x of row y on.
void storeSamples(const Layout& layout, const uint8_t* from, size_t step, Picture& picture,
                  uint32_t x, uint32_t y, uint32_t count, int sample) {
    const size_t first = size_t{x} * 4 + static_cast<size_t>(sample);
    if (layout.floats()) {
        const auto byteOf = sample == 3 ? byteFromMask : byteFromLinear;
        uint8_t* to = picture.row(y) + first;
        for (; count > 0; --count, to += 4, from += step) *to = byteOf(floatAt(from, layout.bits));
        return;
    }
    const bool turned = layout.photometric == PHOTOMETRIC_MINISWHITE && sample == 0;
    if (layout.bits == 8) {
        uint8_t* to = picture.row(y) + first;
        for (; count > 0; --count, to += 4, from += step)
            *to = static_cast<uint8_t>(turned ? ~*from : *from);
        return;
    }
    uint16_t* to = picture.wideRow(y) + first;
    for (; count > 0; --count, to += 4, from += step) {
        const uint32_t value =
            layout.bits == 16 ? numberAt<uint16_t>(from) : numberAt<uint32_t>(from) >> 16;
        *to = static_cast<uint16_t>(turned ? ~value : value);
    }
}

// --- rows ---

struct Reader {
    TIFF* tiff;
    const Layout& layout;
    Picture& picture;
    ChannelOrder order;
    std::vector<uint8_t> room;
};

// A run of pixels of a strip's or tile's row; `plane` is the one that it holds of a file that keeps
// its channels apart.
void storePixels(Reader& reader, const uint8_t* row, uint32_t x, uint32_t y, uint32_t count,
                 uint16_t plane) {
    const Layout& layout = reader.layout;
    const size_t bytes = layout.sampleBytes();
    if (layout.separate()) {
        storeSamples(layout, row, bytes, reader.picture, x, y, count, reader.order.place[plane]);
        return;
    }
    for (uint32_t i = 0; i < reader.order.channels; ++i)
        storeSamples(layout, row + i * bytes, bytes * layout.samples, reader.picture, x, y, count,
                     reader.order.place[i]);
}

bool readStrips(Reader& reader, uint16_t plane) {
    const Layout& layout = reader.layout;
    for (uint32_t y = 0; y < layout.height; ++y) {
        if (TIFFReadScanline(reader.tiff, reader.room.data(), y, plane) < 0) return false;
        storePixels(reader, reader.room.data(), 0, y, layout.width, plane);
    }
    return true;
}

bool readTiles(Reader& reader, uint16_t plane) {
    const Layout& layout = reader.layout;
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
            for (uint32_t i = 0; i < std::min(height, layout.height - y); ++i)
                storePixels(reader, reader.room.data() + i * rowBytes, x, y + i, columns, plane);
        }
    return true;
}

Failure readPlain(TIFF* tiff, const Layout& layout, const Report& report, Picture& picture) {
    const uint64_t most = std::min(mostBlockBytes, picture.mostBytes);
    picture.colour = !layout.grey();
    picture.mask = layout.mask();
    const uint64_t block = layout.tiled ? TIFFTileSize64(tiff) : TIFFScanlineSize64(tiff);
    if (block == 0) return failureOf(report);
    if (block > most) return "a strip or tile of the file is too large";
    Reader reader{tiff, layout, picture, usualOrder(picture.colour, picture.mask), {}};
    reader.room.resize(block);
    const uint32_t planes = layout.separate() ? reader.order.channels : 1;
    for (uint16_t plane = 0; plane < planes; ++plane)
        if (!(layout.tiled ? readTiles(reader, plane) : readStrips(reader, plane)))
            return failureOf(report);
    for (uint32_t y = 0; y < picture.height; ++y) completeRow(picture, y);
    return {};
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

Failure readConverted(TIFF* tiff, const Layout& layout, const Report& report, Picture& picture) {
    const uint16_t extra = keepColourAsStored(tiff);
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(tiff, reason)) return std::string(reason);
    // As it is stored: it is turned upright afterwards.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    static_assert(std::endian::native == std::endian::little, "red is the lowest byte");
    auto* pixels = reinterpret_cast<uint32_t*>(picture.samples.data());
    if (!TIFFReadRGBAImageOriented(tiff, layout.width, layout.height, pixels, ORIENTATION_TOPLEFT,
                                   1))
        return failureOf(report);
    picture.mask = extra > 0;
    picture.colour = !layout.grey();
    return {};
}

Failure read(const SourceFile& source, Picture& picture) {
    Report report;
    Stream stream{source.file, std::min(mostBlockBytes, picture.mostBytes)};
    const TiffPtr tiff = open(stream, "rm", report);
    if (!tiff) return failureOf(report);
    const Layout layout = layoutOf(tiff.get());
    if (layout.samples > mostSamples)
        return "pixels of " + std::to_string(layout.samples) + " channels cannot be read";
    const bool plain = layout.plain();
    if (Failure failure = picture.allocate(layout.width, layout.height, plain && layout.wide()))
        return failure;
    if (Failure failure = plain ? readPlain(tiff.get(), layout, report, picture)
                                : readConverted(tiff.get(), layout, report, picture))
        return failure;
    return turnUpright(picture, layout.orientation);
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
    Report report;
    Stream stream{target.file};
    const TiffPtr tiff = open(stream, "w", report);
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
    if (stream.writeError != 0 || report.text[0] == 0) return writingFailure(stream.writeError);
    return "the picture cannot be packed: " + std::string(report.text);
}

}  // namespace

const Codec tiffCodec = {"tiff", recognises, read, write};

}  // namespace vistel

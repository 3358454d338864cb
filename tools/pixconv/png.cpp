// PNG by libpng. Samples are kept as they are stored: no gamma, no multiplication by the mask.

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <vector>

#include "byte_target.h"
#include "codecs.h"
#include "file_starts.h"
#include "packed_rows.h"

namespace vistel {

namespace {

// What one of the library's own blocks may take; the picture is not among them.
constexpr png_alloc_size_t mostBlockBytes = 64 << 20;

// The library reports a failure by a jump. The jump passes no destructor: whatever has one lives
// in the caller of the function that the library is called from.
struct Report {
    char text[160] = "";
};

void onError(png_structp png, png_const_charp text) {
    auto* report = static_cast<Report*>(png_get_error_ptr(png));
    std::snprintf(report->text, sizeof report->text, "%s", text);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void writeBytes(png_structp png, png_bytep bytes, size_t size) {
    auto* file = static_cast<FILE*>(png_get_io_ptr(png));
    if (std::fwrite(bytes, 1, size, file) == size) return;
    png_error(png, errno != 0 ? std::strerror(errno) : "the file cannot be written");
}

void flushBytes(png_structp) {}

// --- reading ---

struct Reader {
    Report report;
    FILE* file = nullptr;
    uint64_t left = 0;  // bytes of the file
    png_structp png = nullptr;
    png_infop info = nullptr;
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

// The library asks for packed pixels in blocks. One that is not whole is lost to it, so that the
// last ones are small: all rows come that a cut file holds.
constexpr size_t usualBlock = 8192, lastBlocks = 16;

void readBytes(png_structp png, png_bytep bytes, size_t size) {
    auto* reader = static_cast<Reader*>(png_get_io_ptr(png));
    const size_t there = std::fread(bytes, 1, size, reader->file);
    reader->left -= std::min<uint64_t>(reader->left, there);
    if (there != size) png_error(png, "the file ends early");
    if (reader->left < usualBlock) png_set_compression_buffer_size(png, lastBlocks);
}

// Asks for four samples a pixel, in 8 or 16 bits of this machine's order.
void askForPixels(Reader& reader, Picture& picture) {
    png_structp png = reader.png;
    const int type = png_get_color_type(png, reader.info);
    const bool transparent = png_get_valid(png, reader.info, PNG_INFO_tRNS) != 0;
    picture.colour = (type & PNG_COLOR_MASK_COLOR) != 0;
    picture.mask = (type & PNG_COLOR_MASK_ALPHA) != 0 || transparent;
    png_set_expand(png);  // palettes, fewer than 8 bits, a transparent colour
    if (!picture.colour) png_set_gray_to_rgb(png);
    if (picture.wide) png_set_swap(png);
    if (!picture.mask) png_set_add_alpha(png, 0xFFFF, PNG_FILLER_AFTER);
}

void readRows(Reader& reader, Picture& picture) {
    const int passes = png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
    if (png_get_rowbytes(reader.png, reader.info) != picture.rowSamples() * (picture.wide ? 2 : 1))
        png_error(reader.png, "an unknown layout of pixels");
    for (int pass = 0; pass < passes; ++pass)
        for (uint32_t y = 0; y < picture.height; ++y) {
            auto* row = picture.wide ? reinterpret_cast<png_bytep>(picture.wideRow(y))
                                     : static_cast<png_bytep>(picture.row(y));
            // The first passes fill the places of later ones too: a part is coarse, not full of
            // holes.
            const bool interlaced = passes > 1;
            png_read_row(reader.png, interlaced ? nullptr : row, interlaced ? row : nullptr);
            if (pass == 0) picture.rowsRead = y + 1;
        }
    png_read_end(reader.png, nullptr);
}

bool readHeader(Reader& reader) {
    if (setjmp(png_jmpbuf(reader.png))) return false;
    png_read_info(reader.png, reader.info);
    return true;
}

bool readPixels(Reader& reader, Picture& picture) {
    if (setjmp(png_jmpbuf(reader.png))) return false;
    askForPixels(reader, picture);
    readRows(reader, picture);
    return true;
}

Failure read(const SourceFile& source, Picture& picture) {
    Reader reader;
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader.report, onError, onWarning);
    if (reader.png) reader.info = png_create_info_struct(reader.png);
    if (!reader.info) return "there is not enough memory";
    reader.file = source.file;
    reader.left = source.size;
    png_set_read_fn(reader.png, &reader, readBytes);
    png_set_user_limits(reader.png, 65535, 65535);
    png_set_chunk_malloc_max(reader.png, mostBlockBytes);
    png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    if (!readHeader(reader)) return std::string(reader.report.text);
    Failure failure = picture.allocate(png_get_image_width(reader.png, reader.info),
                                       png_get_image_height(reader.png, reader.info),
                                       png_get_bit_depth(reader.png, reader.info) == 16);
    if (failure) return failure;
    if (!readPixels(reader, picture)) return std::string(reader.report.text);
    return {};
}

// --- writing ---

struct Writer {
    Report report;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::vector<uint8_t> row;
    ~Writer() { png_destroy_write_struct(&png, &info); }
};

int colourType(const Picture& picture) {
    return (picture.colour ? PNG_COLOR_MASK_COLOR : 0) | (picture.mask ? PNG_COLOR_MASK_ALPHA : 0);
}

bool writeImage(Writer& writer, const Picture& picture) {
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_set_IHDR(writer.png, writer.info, picture.width, picture.height, picture.wide ? 16 : 8,
                 colourType(picture), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    // Saving whole animations is a matter of seconds; the higher levels gain a few per cent.
    png_set_compression_level(writer.png, 3);
    png_write_info(writer.png, writer.info);
    if (picture.wide) png_set_swap(writer.png);
    const int channels = channelsOf(picture);
    for (uint32_t y = 0; y < picture.height; ++y) {
        auto* row = reinterpret_cast<uint16_t*>(writer.row.data());
        if (picture.wide)
            packRow(picture.wideRow(y), picture.width, channels, row);
        else
            packRow(picture.row(y), picture.width, channels, writer.row.data());
        png_write_row(writer.png, writer.row.data());
    }
    png_write_end(writer.png, nullptr);
    return true;
}

Failure write(const Picture& picture, const TargetFile& target) {
    Writer writer;
    writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer.report, onError, onWarning);
    if (writer.png) writer.info = png_create_info_struct(writer.png);
    if (!writer.info) return "there is not enough memory";
    png_set_write_fn(writer.png, target.file, writeBytes, flushBytes);
    writer.row.resize(picture.rowSamples() * (picture.wide ? 2 : 1));
    if (!writeImage(writer, picture)) return std::string(writer.report.text);
    return {};
}

bool isPng(std::span<const uint8_t> start) { return startsWith(start, "\x89PNG\r\n\x1A\n"); }

}  // namespace

const Codec pngCodec = {"png", isPng, read, write};

}  // namespace vistel

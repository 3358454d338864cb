// Writes frame files: header, scanlines, tiles.
//
//     ImageWriter writer;
//     writer.open("shot.1");                                  // one image form is open
//     writer.writeText("NAME", "first take");                 // optional, before the pixels
//     writer.writeHeader(width, height, imageColour | imageMask);
//     writer.beginImageData();
//     for (...) writer.writeScanline(row);                    // first row of the file first
//     writer.endImage();
//     writer.close();
//
// Every operation returns iffOk or a code of result_codes.h. An operation that fails leaves the
// writer open; close it and drop the file. The interface is whole: single tiles (writeTile),
// several images in a file (nextImage) and another packing (setCompression) have no caller in the
// viewer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <future>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "iff/frame_store.h"
#include "iff/image_header.h"
#include "iff/result_codes.h"
#include "iff/tile_encoder.h"

namespace vistel {

class IffWriter;

// Width and height of the tiles that an image is cut into (the last column and row are narrower).
struct TileSize {
    uint32_t width = 64, height = 64;
};
TileSize tileSize(uint16_t width, uint16_t height);
// ((width - 1) / tile width + 1) x ((height - 1) / tile height + 1).
uint64_t tileCount(uint32_t width, uint32_t height, TileSize tile);

class ImageWriter {
 public:
    ImageWriter();
    ~ImageWriter();  // closes, results are lost
    ImageWriter(const ImageWriter&) = delete;
    ImageWriter& operator=(const ImageWriter&) = delete;

    // Opens the file and its first image form. "" and "stdout" are the standard output; a format
    // (even an empty one) sends the stream through the image converter when there is one.
    [[nodiscard]] int open(const std::string& name, const std::string* format = nullptr);
    // The same on a stream that is already open and is closed by close (a standard stream is not).
    // forceStream treats a regular file as one that cannot seek.
    [[nodiscard]] int openStream(FILE* stream, bool forceStream = false);
    // Ends what is open and closes the stream; the first failure. Does nothing when nothing is
    // open.
    int close();
    // Closes the stream without the ends of what is open: who reads it finds it incomplete. For a
    // stream that cannot seek (forceStream); in others the sizes stay unknown.
    int abandon();
    bool isOpen() const { return container_ != nullptr; }
    IffWriter* container() { return container_.get(); }

    // How tiles are packed: compressNone, compressRle (the default) or compressQrl; before the
    // header. iffClientError for any other value or after the header, iffInvalidOnFifo on a pipe.
    [[nodiscard]] int setCompression(uint32_t compression);
    // Two bytes per channel; before the header. Rows are then given to writeWideScanline.
    [[nodiscard]] int setWideChannels(bool wide);

    // Whether the rows come last row first (the default is first row first); before the image data.
    // The file is the same either way but for the order of its tiles.
    [[nodiscard]] int setRowsFromLast(bool fromLast);

    // Whether a second thread packs half of the tiles of each band (the default is one thread); at
    // any time. The file is the same.
    void setTwoThreads(bool two) { twoThreads_ = two; }

    // A chunk of the image form ("NAME", "AUTH", "ANNO", "ZPLC" ...). iffClientError inside the
    // image data.
    [[nodiscard]] int writeText(const char (&id)[5], std::string_view text);
    [[nodiscard]] int writeChunk(const char (&id)[5], const void* body, size_t size);

    // "TBHD" and "DATE". Flags are those of ImageFlag; tiles 0 means: count them. iffBadImageHeader
    // for a zero size, iffBadImageSize for one that tile rectangles cannot name (over 65535).
    [[nodiscard]] int writeHeader(uint32_t width, uint32_t height, uint32_t flags,
                                  uint16_t tiles = 0);

    // Opens the tile group and its bands of rows. iffBadImageHeader when no header was written,
    // iffNoMemory, iffIoAfterImageEnd when this image has ended; twice: iffClientError.
    [[nodiscard]] int beginImageData();

    // One row of each plane, width pixels; any may be null and is then written as zeros. Colour
    // pixels hold red in the lowest byte, then green, blue, mask; a grey image takes the green
    // byte. `second` is the low-order colour of an image with imageTwelveBit.
    // iffNoImageHeader, iffClientError outside the image data or when the image's channels have the
    // other width, iffLineIoInPageMode after writeTile, iffIoAfterImageEnd when all rows were
    // given, iffColourIoOnBlack, iffNo16BitChannel, iffNoZPlane. Once tiles could not be written
    // every later row and tile, and endImage, give that failure again.
    [[nodiscard]] int writeScanline(const uint32_t* colour, const float* z = nullptr,
                                    const uint32_t* second = nullptr);
    // The same for 16-bit channels: four words for each pixel, red, green, blue, mask.
    [[nodiscard]] int writeWideScanline(const uint16_t* colour, const float* z = nullptr,
                                        const uint16_t* second = nullptr);

    // Page mode: one tile chunk ("RGBA", "RGB2", "ZBUF") of any rectangle; `raw` holds each pixel's
    // channels in file order (mask, blue, green, red, those there are; big-endian).
    // iffPageIoInScanlineMode once a scanline was written, iffBadTiling outside the image, and the
    // codes of writeScanline.
    [[nodiscard]] int writeTile(const char (&id)[5], const TileRect& rect, const uint8_t* raw);

    // Writes the rows of an unfinished band and closes the tile group. iffPartialImageIo when rows
    // are missing. Ending twice does nothing.
    int endImage();

    // Ends this image form and begins another one in the same file.
    [[nodiscard]] int nextImage();

    const ImageHeader& header() const { return header_; }

 private:
    enum State : uint32_t {
        headerWritten = 1,
        pageMode = 2,
        imageEnded = 16,
        lineMode = 32,
    };
    // Rows of one plane until a band of tiles is full, as they were handed over.
    struct Band {
        std::vector<uint8_t> bytes;
        size_t pixelBytes = 0, rowBytes = 0;
        uint8_t* row(size_t y) { return bytes.data() + y * rowBytes; }
        const uint8_t* row(size_t y) const { return bytes.data() + y * rowBytes; }
        bool there() const { return !bytes.empty(); }
    };
    struct BandTile {
        int32_t id = 0;
        TileRect rect;
        TileSource source;            // without pixels: the plane has none
        std::vector<uint8_t> packed;  // by the second thread
    };

    bool is(State state) const { return (state_ & state) != 0; }
    bool inImageData() const;
    [[nodiscard]] int canWritePixels() const;
    [[nodiscard]] int canWriteRow(bool wide, bool colour, bool z, bool second) const;
    template <class Channel>
    [[nodiscard]] int writeRow(const Channel* colour, const float* z, const Channel* second);
    [[nodiscard]] int allocateBands();
    [[nodiscard]] int flushBand();
    [[nodiscard]] int writeBandTiles();
    void addBandTile(int32_t id, const Band& band, const TileRect& rect);
    std::future<void> packBeside(size_t first);
    [[nodiscard]] int writeTileChunk(int32_t id, const TileRect& rect, const TileSource& source);
    [[nodiscard]] int writePacked(int32_t id, const TileRect& rect, std::span<const uint8_t> data);
    TileFormat formatOf(int32_t id) const;
    void reset();
    void resetImage();

    std::unique_ptr<IffWriter> container_;
    ImageHeader header_;
    TileSize tile_;
    uint32_t state_ = 0;
    uint32_t rowsWritten_ = 0;  // of the image
    uint32_t bandRows_ = 0;     // waiting in the bands
    int failure_ = iffOk;       // the first one while tiles were written
    uint32_t compression_ = compressRle;
    uint16_t wideChannels_ = 0;
    bool fromLastRow_ = false;
    bool twoThreads_ = false;
    Band colour_, second_, z_;
    std::vector<BandTile> bandTiles_;
    TileEncoder encoder_, encoderBeside_;
};

}  // namespace vistel

// What the handlers of one load share. Internal to the image loader.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "iff/frame_store.h"
#include "iff/iff_reader.h"
#include "iff/image_load_request.h"
#include "iff/tile_codec.h"

namespace vistel {

// One image form while it is read.
struct ImageForm {
    FrameStore frame;
    bool headerRead = false;
    bool wanted = false;      // a re-read: this is the form it is for
    bool heldForms = false;   // image forms lie inside this one
    bool blackTiles = false;  // tiles of an image that stores neither colour nor mask
    uint64_t dataBytes = 0;   // of the tiles read
    DisplaySize display;      // of the header
    TileFormat colourFormat;  // of the header
};

// A buffer for tile data that grows as the bytes really arrive and never shrinks.
class TileData {
 public:
    // Reads `size` bytes of the current chunk.
    [[nodiscard]] int read(IffReader& chunk, size_t size);
    const uint8_t* bytes() const { return block_.get(); }

 private:
    struct Freer {
        void operator()(void* block) const { std::free(block); }
    };
    [[nodiscard]] bool grow(size_t size);
    std::unique_ptr<uint8_t, Freer> block_;
    size_t capacity_ = 0;
};

struct ImageParse {
    ImageParse(const ImageLoadRequest& theRequest, FrameStore& theFrame)
        : request(theRequest), frame(theFrame) {}

    const ImageLoadRequest& request;
    FrameStore& frame;  // receives each form that was read
    ImageForm outside;  // takes what chunks outside any image form say
    ImageForm* form = &outside;
    int formCount = 0;
    int openForms = 0;    // image forms around the place that is read
    int systemError = 0;  // errno of the first iffIoError
    bool soundUsable = false;
    TileData data;
    TileDecoder decoder;

    bool rereading() const { return request.wantedForm != 0; }
    bool listing() const { return request.verbose && !rereading(); }
    // Chunks that make the picture count in a full pass and in the wanted form.
    bool formCounts() const { return !rereading() || form->wanted; }
};

// Reads, lists or skips one plain chunk.
[[nodiscard]] int handleChunk(IffReader& chunk, ImageParse& parse);

// Reads a tile's rectangle and data and moves it into its plane of the current form's frame.
[[nodiscard]] int loadColourTile(IffReader& chunk, ImageParse& parse);
[[nodiscard]] int loadDepthTile(IffReader& chunk, ImageParse& parse);
// The zero-filled colour plane of an image whose tiles hold nothing.
[[nodiscard]] int makeBlackPicture(ImageForm& form);
// Whether tiles of so many bytes can have been packed from a plane of so many, or it is no larger
// than what is granted to every file.
bool memoryJustified(uint64_t planeBytes, uint64_t dataBytes);
// Reads only the rectangle.
[[nodiscard]] int readTileRect(IffReader& chunk, TileRect& rect);

}  // namespace vistel

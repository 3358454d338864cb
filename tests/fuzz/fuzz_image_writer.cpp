// Writes images as the input says: size, flags, compression, channel width, rows or tiles, rows
// from either end, calls in any order, right or wrong. What was written without an error must read
// back equal.
//
// Input: one byte each for file or pipe, compression, channel width, flags, second colour, width,
// height; then calls: one byte each, followed by the bytes of its arguments and pixels.
//     build/fuzz/bin/fuzz_image_writer -max_len=600 tests/fuzz/corpus/fuzz_image_writer

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "iff/image_loader.h"
#include "iff/image_writer.h"
#include "iff/tile_format.h"
#include "platform/files.h"

using namespace vistel;

namespace {

// A run of the target stays short: so many pixels and no more.
constexpr size_t mostPixels = 20000;

void require(bool condition) {
    if (!condition) std::abort();
}

int listed(int code) {
    for (const ResultText& row : resultTexts())
        if (row.code == code) return code;
    std::abort();
}

struct Input {
    const uint8_t* data;
    size_t size, at = 0;
    bool more() const { return at < size; }
    uint8_t byte() { return more() ? data[at++] : 0; }
    // 1 to 150, or one of the sizes around which the tiles change.
    uint32_t length() {
        static constexpr uint16_t borders[] = {4096, 4097, 8193, 16384, 16385, 65535};
        const uint8_t value = byte();
        return value >= 250 ? borders[value - 250] : 1 + value % 150u;
    }
};

// What an image form of the file must hold.
struct Written {
    bool header = false, colourTiles = false, depthTiles = false;
    uint32_t width = 0, height = 0, flags = 0;
    std::vector<uint32_t> colour, z;  // every pixel, as the loader stores it

    bool has(ImageFlag flag) const { return (flags & flag) != 0; }
    bool storesColour() const { return !has(imageBlack) || has(imageMask); }
    size_t pixelAt(uint32_t x, uint32_t y) const { return size_t{y} * width + x; }
};

// A plane pixel as the loader gives it back.
uint32_t seenPixel(uint32_t pixel, const Written& image) {
    if (image.has(imageBlack)) return image.has(imageMask) ? pixel & 0xFF000000 : 0;
    if (!image.has(imageMask)) pixel |= 0xFF000000;
    if (image.has(imageColour)) return pixel;
    return (pixel & 0xFF000000) | (pixel >> 8 & 0xFF) * 0x010101;
}

class Session {
 public:
    Session(Input& input, const std::string& name) : input_(input) {
        const bool pipe = (input.byte() & 1) != 0;
        require(writer_.openStream(platform::openFile(name, "w"), pipe) == iffOk);
        const uint8_t compression = input.byte() % 4;
        const int code = listed(writer_.setCompression(compression));
        require((code == iffOk) == (!pipe && compression <= compressQrl));
        wide_ = (input.byte() & 1) != 0;
        require(writer_.setWideChannels(wide_) == iffOk);
        image_.flags = input.byte();
        if (input.byte() & 1) image_.flags |= imageTwelveBit;
        image_.width = input.length();
        image_.height = input.length();
    }

    // The images of the file, when it can be read back.
    bool run() {
        while (input_.more() && budget_ > 0) call(input_.byte());
        const int code = listed(writer_.close());
        require(!writer_.isOpen() && writer_.close() == iffOk);
        images.push_back(std::move(image_));
        return code == iffOk || code == iffPartialImageIo;
    }
    std::vector<Written> images;

 private:
    void call(uint8_t what) {
        using Call = void (Session::*)(uint8_t detail);
        static constexpr Call calls[16] = {
            &Session::header, &Session::begin,     &Session::end,      &Session::next,
            &Session::text,   &Session::compress,  &Session::fromLast, &Session::colourTile,
            &Session::rows,   &Session::depthTile, &Session::rows,     &Session::rows,
            &Session::rows,   &Session::header,    &Session::begin,    &Session::rows,
        };
        (this->*calls[what & 15])(what >> 4);
    }

    void header(uint8_t) {
        if (listed(writer_.writeHeader(image_.width, image_.height, image_.flags)) == iffOk)
            image_.header = true;
    }
    void begin(uint8_t) {
        if (listed(writer_.beginImageData()) != iffOk) return;
        const size_t pixels = size_t{image_.width} * image_.height;
        if (pixels > 4 * mostPixels) budget_ = 0;  // too large to be compared
        if (budget_ > 0) image_.colour.assign(pixels, 0);
        image_.z = image_.colour;
    }
    void end(uint8_t) { listed(writer_.endImage()); }
    void next(uint8_t) {
        if (listed(writer_.nextImage()) != iffOk) return;
        images.push_back(std::exchange(image_, {}));
        image_.width = input_.length();
        image_.height = input_.length();
        image_.flags = input_.byte() & 0x17;
        rows_ = 0;
    }
    void text(uint8_t detail) {
        static constexpr char words[] = "some words of the picture";
        listed(writer_.writeText("ANNO", std::string_view(words, detail)));
    }
    void compress(uint8_t detail) { listed(writer_.setCompression(detail)); }
    void fromLast(uint8_t detail) {
        if (listed(writer_.setRowsFromLast(detail & 1)) == iffOk) fromLast_ = detail & 1;
    }

    // Runs of pixels: a length and what the value changes by.
    uint32_t pixel() {
        if (runLeft_ == 0) {
            runLeft_ = 1 + input_.byte();
            value_ = value_ * 0x01010105 + input_.byte();
        }
        --runLeft_;
        return value_;
    }
    std::vector<uint32_t> pixels(uint64_t count) {
        std::vector<uint32_t> made;
        if (count > budget_) count = budget_ = 0;
        for (budget_ -= count; count > 0; --count) made.push_back(pixel());
        return made;
    }

    void rows(uint8_t detail) {
        for (unsigned count = 1 + (detail & 8 ? input_.byte() : 0u); count > 0; --count)
            if (row(detail) != iffOk) return;
    }
    int row(uint8_t detail) {
        const std::vector<uint32_t> made = pixels(image_.width);
        if (made.empty()) return iffClientError;
        std::vector<uint16_t> words;
        for (const uint32_t p : made)
            for (int shift = 0; shift < 32; shift += 8)
                words.push_back(static_cast<uint16_t>((p >> shift & 255) << 8 | (p & 3)));
        std::vector<float> depths;
        for (const uint32_t p : made) depths.push_back(static_cast<float>(p >> 4));
        const bool colour = !(detail & 1), second = (detail & 4) != 0;
        const float* z = detail & 2 ? depths.data() : nullptr;
        const int code = wide_ ? writer_.writeWideScanline(colour ? words.data() : nullptr, z,
                                                           second ? words.data() : nullptr)
                               : writer_.writeScanline(colour ? made.data() : nullptr, z,
                                                       second ? made.data() : nullptr);
        if (listed(code) != iffOk) return code;
        const uint32_t y = fromLast_ ? image_.height - 1 - rows_ : rows_;
        ++rows_;
        image_.colourTiles |= image_.storesColour();
        image_.depthTiles |= image_.has(imageZ);
        for (uint32_t x = 0; x < image_.width; ++x) {
            image_.colour[image_.pixelAt(x, y)] = seenPixel(colour ? made[x] : 0, image_);
            if (z) image_.z[image_.pixelAt(x, y)] = std::bit_cast<uint32_t>(z[x]);
        }
        return iffOk;
    }

    TileRect rectangle(uint8_t detail) {
        TileRect rect;
        rect.x1 = input_.byte();
        rect.y1 = input_.byte();
        rect.x2 = static_cast<uint16_t>(rect.x1 + input_.byte() % 80);
        rect.y2 = static_cast<uint16_t>(rect.y1 + input_.byte() % 80);
        if (detail & 1) std::swap(rect.x1, rect.x2);
        return rect;
    }
    static uint64_t area(const TileRect& rect) {
        return rect.x1 <= rect.x2 ? uint64_t{rect.width()} * rect.height() : 0;
    }
    void colourTile(uint8_t detail) {
        const TileRect rect = rectangle(detail);
        const std::vector<uint32_t> made = pixels(area(rect));
        const TileFormat format = colourTileFormat(writer_.header());
        std::vector<uint8_t> raw;
        for (const uint32_t p : made)
            for (int i = 0; i < format.channelCount; ++i) {
                raw.push_back(static_cast<uint8_t>(p >> 8 * (3 - format.channels[i])));
                if (format.valueBytes == 2) raw.push_back(7);
            }
        if (area(rect) != made.size()) return;
        if (listed(writer_.writeTile("RGBA", rect, raw.data())) != iffOk) return;
        image_.colourTiles |= image_.storesColour();
        size_t from = 0;
        for (uint32_t y = rect.y1; y <= rect.y2; ++y)
            for (uint32_t x = rect.x1; x <= rect.x2; ++x)
                image_.colour[image_.pixelAt(x, y)] = seenPixel(made[from++], image_);
    }
    void depthTile(uint8_t detail) {
        const TileRect rect = rectangle(detail);
        const std::vector<uint32_t> made = pixels(area(rect));
        std::vector<uint8_t> raw;
        for (const uint32_t p : made)
            for (int shift = 24; shift >= 0; shift -= 8)
                raw.push_back(static_cast<uint8_t>(p >> shift));
        if (area(rect) != made.size()) return;
        if (listed(writer_.writeTile("ZBUF", rect, raw.data())) != iffOk) return;
        image_.depthTiles = true;
        size_t from = 0;
        for (uint32_t y = rect.y1; y <= rect.y2; ++y)
            for (uint32_t x = rect.x1; x <= rect.x2; ++x)
                image_.z[image_.pixelAt(x, y)] = made[from++];
    }

    Input& input_;
    ImageWriter writer_;
    Written image_;
    bool wide_ = false, fromLast_ = false;
    uint32_t rows_ = 0, value_ = 0;
    unsigned runLeft_ = 0;
    uint64_t budget_ = mostPixels;
};

struct ReadBack {
    const std::vector<Written>& images;
    size_t next = 0;
};

int compare(void* owner, FrameStore& frame, int error) {
    auto& back = *static_cast<ReadBack*>(owner);
    require(error == iffOk && back.next < back.images.size());
    const Written& image = back.images[back.next++];
    if (!image.header) return require(!frame.hasPicture()), iffOk;
    require(frame.header.width == image.width && frame.header.height == image.height);
    require(frame.header.flags == image.flags);
    require(!image.colourTiles || !frame.colour.empty());
    require(image.depthTiles == !frame.z.empty());
    for (size_t i = 0; !frame.colour.empty() && i < image.colour.size(); ++i)
        require(frame.colour.data()[i] == image.colour[i]);
    for (size_t i = 0; !frame.z.empty() && i < image.z.size(); ++i)
        require(std::bit_cast<uint32_t>(frame.z.data()[i]) == image.z[i]);
    return iffOk;
}

// The file that is written again and again; it goes with the program.
struct OutputFile {
    OutputFile() {
        const std::string bare = "vistel_fuzz_" + std::to_string(std::random_device{}());
        name = (std::filesystem::temp_directory_path() / bare).string();
    }
    ~OutputFile() {
        std::error_code ignored;
        std::filesystem::remove(name, ignored);
    }
    std::string name;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const OutputFile output;
    Input input{data, size};
    Session session(input, output.name);
    if (!session.run()) return 0;

    const platform::FilePtr file(platform::openFile(output.name, "r"));
    require(file != nullptr);
    ReadBack back{session.images};
    ImageLoadRequest request;
    request.stream = file.get();
    request.formRead = compare;
    request.owner = &back;
    FrameStore working;
    require(loadImages(request, working) == iffOk);
    require(back.next == session.images.size());
    return 0;
}

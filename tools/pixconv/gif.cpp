// GIF: the first picture of the file, on its canvas.
//
//     0  "GIF87a" or "GIF89a"   6 canvas width   8 height   10 flags   11 background   12 aspect
//     13 the common colours, when flag 0x80 is set: two to the power of the lowest three flags
//        plus one, three bytes each
//     then blocks by their first byte:
//     0x21 kind, pieces         0xF9 is the picture's control: flags, delay (2), transparent index
//     0x2C left (2) top (2) width (2) height (2) flags, own colours, smallest code, pieces
//     0x3B the end
//
// Numbers are little-endian. A piece is a count and as many bytes; count 0 ends them. What the
// picture leaves of the canvas, or its data of the picture, is transparent black.

#include <array>
#include <cstring>

#include "byte_source.h"
#include "codecs.h"

namespace vistel {

namespace {

constexpr uint32_t mostCodeBits = 12;
constexpr uint32_t mostCodes = 1u << mostCodeBits;

using Colours = std::array<uint8_t, 256 * 3>;

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 6 && (std::memcmp(start.data(), "GIF87a", 6) == 0 ||
                                 std::memcmp(start.data(), "GIF89a", 6) == 0);
}

Failure endsEarly() { return "the file ends early"; }

// Bytes that come in pieces, and codes out of their bits, the lowest first.
class Pieces {
 public:
    explicit Pieces(ByteSource& source) : source_(source) {}

    // Below 0 behind the last one.
    int byte() {
        if (at_ == size_ && !next()) return -1;
        return bytes_[at_++];
    }
    int code(uint32_t bits) {
        for (; held_ < bits; held_ += 8) {
            const int more = byte();
            if (more < 0) return -1;
            store_ |= uint32_t(more) << held_;
        }
        const uint32_t code = store_ & ((1u << bits) - 1);
        store_ >>= bits;
        held_ -= bits;
        return int(code);
    }
    // To the end of the last piece.
    void skip() {
        while (next()) {
        }
    }
    bool cut() const { return cut_; }  // the file ended before the pieces did

 private:
    bool next() {
        if (ended_) return false;
        const int count = source_.next();
        cut_ = count < 0 || !source_.read(bytes_.data(), size_t(count));
        ended_ = cut_ || count == 0;
        at_ = 0;
        size_ = ended_ ? 0 : size_t(count);
        return !ended_;
    }

    ByteSource& source_;
    std::array<uint8_t, 255> bytes_;
    size_t at_ = 0, size_ = 0;
    bool ended_ = false, cut_ = false;
    uint32_t store_ = 0, held_ = 0;
};

// Gives `put` one colour index after the other until it returns false or the codes end. Codes below
// `clear` stand for themselves; every other one for what an earlier code stood for and one more.
template <class Put>
Failure unpack(Pieces& pieces, uint32_t rootBits, Put put) {
    struct Entry {
        uint16_t before;
        uint16_t length;
        uint8_t first, last;
    };
    std::array<Entry, mostCodes> table;
    const uint32_t clear = 1u << rootBits, end = clear + 1;
    for (uint32_t i = 0; i < clear; ++i) table[i] = {0, 1, uint8_t(i), uint8_t(i)};
    uint32_t count = end + 1, bits = rootBits + 1;
    int previous = -1;
    std::array<uint8_t, mostCodes> indices;
    for (;;) {
        const int code = pieces.code(bits);
        if (code < 0) return pieces.cut() ? endsEarly() : Failure();
        if (uint32_t(code) == end) return {};
        if (uint32_t(code) == clear) {
            count = end + 1;
            bits = rootBits + 1;
            previous = -1;
            continue;
        }
        if (previous >= 0 && count < mostCodes) {
            const Entry& before = table[size_t(previous)];
            const uint8_t last = uint32_t(code) < count ? table[size_t(code)].first : before.first;
            table[count++] = {uint16_t(previous), uint16_t(before.length + 1), before.first, last};
        }
        if (uint32_t(code) < clear ? code >= 256 : uint32_t(code) >= count)
            return "the file is damaged: a code that nothing stands for";
        if (count == 1u << bits && bits < mostCodeBits) ++bits;
        previous = code;
        const uint32_t length = table[size_t(code)].length;
        for (uint32_t i = length, at = uint32_t(code); i-- > 0; at = table[at].before)
            indices[i] = table[at].last;
        for (uint32_t i = 0; i < length; ++i)
            if (!put(indices[i])) return {};
    }
}

struct Place {
    uint32_t left, top, width, height;
    bool interlaced;
};

// Puts the pixels of the picture on the canvas, what lies there of it, in the file's order.
class Brush {
 public:
    Brush(Picture& canvas, const Place& place, const Colours& colours, int transparent)
        : canvas_(canvas), place_(place), colours_(colours), transparent_(transparent) {}

    // False behind the last one.
    bool put(uint8_t index) {
        const uint32_t x = place_.left + x_, y = place_.top + y_;
        if (index != transparent_ && x < canvas_.width && y < canvas_.height) {
            uint8_t* pixel = canvas_.row(y) + size_t{x} * 4;
            std::memcpy(pixel, &colours_[size_t{index} * 3], 3);
            pixel[3] = 255;
            ++opaque_;
        }
        return ++x_ < place_.width || nextRow();
    }
    uint64_t opaque() const { return opaque_; }  // pixels of the canvas

 private:
    bool nextRow() {
        struct Pass {
            uint32_t first, step;
        };
        static constexpr Pass passes[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
        x_ = 0;
        y_ += place_.interlaced ? passes[pass_].step : 1;
        while (y_ >= place_.height && place_.interlaced && pass_ < 3) y_ = passes[++pass_].first;
        return y_ < place_.height;
    }

    Picture& canvas_;
    const Place place_;
    const Colours& colours_;
    const int transparent_;
    uint32_t x_ = 0, y_ = 0, pass_ = 0;
    uint64_t opaque_ = 0;
};

// The colours that the flags of a header promise; with none the table stays as it is.
bool readColours(ByteSource& source, int flags, bool& there, Colours& colours) {
    if (!(flags & 0x80)) return true;
    there = true;
    colours = {};  // an index behind the last one is black
    return source.read(colours.data(), size_t{6} << (flags & 7));
}

Failure readPicture(ByteSource& source, bool coloured, Colours& colours, int transparent,
                    Picture& canvas) {
    uint8_t bytes[9];
    if (!source.read(bytes, sizeof bytes)) return endsInHeader();
    const auto number = [&](size_t at) { return readLittle16(bytes + at); };
    const Place place{number(0), number(2), number(4), number(6), (bytes[8] & 0x40) != 0};
    if (canvas.samples.empty())
        if (auto failure = canvas.allocate(place.width, place.height, false)) return failure;
    canvas.mask = true;
    if (place.width == 0 || place.height == 0) return {};
    // Most of it lies beyond the canvas, and unpacking it all would take long.
    if (uint64_t{place.width} * place.height * 4 > mostPictureBytes)
        return "the file is damaged: a picture far larger than its canvas";
    if (!readColours(source, bytes[8], coloured, colours)) return endsInHeader();
    if (!coloured) return "the file is damaged: no colours";
    const int rootBits = source.next();
    if (rootBits < 0) return endsInHeader();
    if (rootBits < 1 || rootBits >= int(mostCodeBits))
        return "the file is damaged: codes of " + std::to_string(rootBits) + " bits";
    Pieces pieces(source);
    Brush brush(canvas, place, colours, transparent);
    const auto put = [&](uint8_t index) { return brush.put(index); };
    if (auto failure = unpack(pieces, uint32_t(rootBits), put)) return failure;
    canvas.mask = brush.opaque() < uint64_t{canvas.width} * canvas.height;
    return {};
}

// Of a block with a 0x21: the transparent index when it is a control that tells one, else -1.
bool readExtension(ByteSource& source, int& transparent) {
    const int kind = source.next();
    Pieces pieces(source);
    if (kind == 0xF9) {
        const int flags = pieces.byte();
        pieces.byte();
        pieces.byte();
        const int index = pieces.byte();
        transparent = flags >= 0 && flags & 1 ? index : -1;
    }
    pieces.skip();
    return !pieces.cut();
}

Failure read(const SourceFile& file, Picture& canvas) {
    ByteSource source(file);
    std::array<uint8_t, 13> header;
    if (!source.read(header.data(), header.size())) return endsInHeader();
    if (!recognises(header)) return "not a GIF picture";
    Colours colours;
    bool coloured = false;
    if (!readColours(source, header[10], coloured, colours)) return endsInHeader();
    const uint32_t width = readLittle16(&header[6]);
    const uint32_t height = readLittle16(&header[8]);
    if (width != 0 && height != 0)  // else the picture's own size
        if (auto failure = canvas.allocate(width, height, false)) return failure;
    for (int transparent = -1;;) switch (source.next()) {
            case 0x21:
                if (!readExtension(source, transparent)) return endsEarly();
                break;
            case 0x2C:
                return readPicture(source, coloured, colours, transparent, canvas);
            case 0x3B:
                return "the file holds no picture";
            case 0:
                break;  // between blocks in some files
            case -1:
                return endsEarly();
            default:
                return "the file is damaged: a block of an unknown kind";
        }
}

}  // namespace

const Codec gifCodec{"gif", recognises, read, nullptr};

}  // namespace vistel

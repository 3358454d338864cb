#include <map>

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

// Codes of growing width for indices, as every writer of the type makes them.
class Packer {
 public:
    Packer(uint32_t rootBits, bool clears, bool ends)
        : root_(rootBits), clears_(clears), ends_(ends) {}

    FileBytes pieces(const FileBytes& indices) {
        restart();
        if (clears_) put(1u << root_);
        uint32_t code = indices.empty() ? 0 : indices[0];
        for (size_t i = 1; i < indices.size(); ++i) {
            const auto known = codes_.find({code, indices[i]});
            if (known != codes_.end()) {
                code = known->second;
                continue;
            }
            put(code);
            if (next_ < 4096) codes_[{code, indices[i]}] = next_++;
            code = indices[i];
        }
        if (!indices.empty()) put(code);
        if (ends_) put((1u << root_) + 1);
        if (held_ > 0) bytes_.push_back(uint8_t(store_));
        FileBytes result{uint8_t(root_)};
        for (size_t at = 0; at < bytes_.size(); at += 255) {
            const size_t count = std::min<size_t>(255, bytes_.size() - at);
            result.push_back(uint8_t(count));
            result.insert(result.end(), bytes_.begin() + std::ptrdiff_t(at),
                          bytes_.begin() + std::ptrdiff_t(at + count));
        }
        return result += FileBytes{0};
    }

 private:
    void restart() {
        next_ = (1u << root_) + 2;
        bits_ = root_ + 1;
    }
    // The reader knows of a new code one code later than the writer.
    void put(uint32_t code) {
        store_ |= code << held_;
        for (held_ += bits_; held_ >= 8; held_ -= 8, store_ >>= 8)
            bytes_.push_back(uint8_t(store_));
        if (next_ == 1u << bits_ && bits_ < 12) ++bits_;
    }

    const uint32_t root_;
    const bool clears_, ends_;
    std::map<std::pair<uint32_t, uint8_t>, uint32_t> codes_;
    uint32_t next_ = 0, bits_ = 0, store_ = 0, held_ = 0;
    FileBytes bytes_;
};

FileBytes word(int number) { return littleEndian(uint64_t(number), 2); }

// A canvas with `colours` common colours: number i is (i, 2i, 3i) and so on.
FileBytes canvas(int width, int height, int colourBits) {
    FileBytes bytes = fileOf("GIF89a");
    bytes += word(width);
    bytes += word(height);
    bytes += FileBytes{uint8_t(colourBits > 0 ? 0x7F + colourBits : 0), 0, 0};
    for (int i = 0; colourBits > 0 && i < 1 << colourBits; ++i)
        bytes += FileBytes{uint8_t(i), uint8_t(2 * i), uint8_t(3 * i)};
    return bytes;
}

FileBytes place(int left, int top, int width, int height, int flags = 0) {
    FileBytes bytes{0x2C};
    for (const int number : {left, top, width, height}) bytes += word(number);
    return bytes += FileBytes{uint8_t(flags)};
}

FileBytes gif(int width, int height, int bits, const FileBytes& before, const FileBytes& where,
              const FileBytes& data) {
    FileBytes bytes = canvas(width, height, bits);
    bytes += before;
    bytes += where;
    bytes += data;
    return bytes += FileBytes{0x3B};
}

FileBytes packed(const FileBytes& indices, uint32_t rootBits = 2, bool clears = true,
                 bool ends = true) {
    return Packer(rootBits, clears, ends).pieces(indices);
}

const FileBytes thirdIsTransparent{0x21, 0xF9, 4, 1, 0, 0, 3, 0};

// The canvas as digits (the red sample), rows divided by blanks; "." for transparent black.
std::string textOf(const FileBytes& bytes) {
    Picture picture;
    if (const Failure failure = readBytes(gifCodec, bytes, picture)) return *failure;
    std::string text;
    bool mask = false;
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (y > 0) text += ' ';
        for (uint32_t x = 0; x < picture.width; ++x) {
            const uint8_t* pixel = picture.row(y) + x * 4;
            mask |= pixel[3] == 0;
            const bool known = pixel[3] == 255 && pixel[1] == 2 * pixel[0];
            text += known ? char('0' + pixel[0]) : pixel[0] + pixel[1] + pixel[3] ? '?' : '.';
        }
    }
    EXPECT_EQ(picture.mask, mask);
    return text;
}

TEST(Gif, TheFirstPictureStandsOnItsCanvas) {
    const FileBytes whole = place(0, 0, 2, 2), data = packed({0, 1, 2, 3});
    FileBytes two = whole;
    two += data;
    two += whole;
    FileBytes comment{0x21, 0xFE, 2, 'h', 'i', 1, '!', 0, 0};
    FileBytes both = thirdIsTransparent;
    both += FileBytes{0x21, 0xF9, 4, 0, 0, 0, 3, 0};
    FileBytes own = place(0, 0, 2, 2, 0x80);
    own += FileBytes{7, 14, 0, 8, 16, 0};
    struct Row {
        const char* what;
        FileBytes file;
        const char* pixels;
    };
    const Row rows[] = {
        {"all of it", gif(2, 2, 2, {}, whole, data), "01 23"},
        {"transparent", gif(2, 2, 2, thirdIsTransparent, whole, data), "01 2."},
        {"the last control counts", gif(2, 2, 2, both, whole, data), "01 23"},
        {"a comment and a zero before it", gif(2, 2, 2, comment, whole, data), "01 23"},
        {"only the first of two", gif(2, 2, 2, {}, two, packed({3, 3, 3, 3})), "01 23"},
        {"colours of its own", gif(2, 2, 2, {}, own, packed({0, 1, 1, 0})), "78 87"},
        {"only its own", gif(2, 2, 0, {}, own, packed({0, 1, 1, 0})), "78 87"},
        {"an index without a colour", gif(1, 1, 1, {}, place(0, 0, 1, 1), packed({3})), "0"},
        {"inside", gif(3, 3, 2, {}, place(1, 1, 1, 1), packed({3})), "... .3. ..."},
        {"partly outside", gif(2, 2, 2, {}, place(1, 0, 2, 2), data), ".0 .2"},
        {"wholly outside", gif(1, 1, 2, {}, place(1, 1, 2, 2), data), "."},
        {"of no size", gif(1, 1, 2, {}, place(0, 0, 0, 0), {}), "."},
        {"a canvas of no size", gif(0, 0, 2, {}, whole, data), "01 23"},
        {"pixels are missing", gif(2, 2, 2, {}, whole, packed({1, 2, 3})), "12 3."},
        {"more pixels than there is room for", gif(1, 2, 2, {}, place(0, 0, 1, 2), data), "0 1"},
        {"without clear and end", gif(2, 2, 2, {}, whole, packed({0, 1, 2, 3}, 2, false, false)),
         "01 23"},
        {"in wider codes", gif(2, 2, 2, {}, whole, packed({0, 1, 2, 3}, 11)), "01 23"},
        {"interlaced",
         gif(1, 9, 3, {}, place(0, 0, 1, 9, 0x40), packed({0, 1, 2, 3, 4, 5, 6, 7, 0}, 3)),
         "0 5 3 6 2 7 4 0 1"},
        {"interlaced, two rows", gif(1, 2, 3, {}, place(0, 0, 1, 2, 0x40), packed({1, 2})), "1 2"},
    };
    for (const Row& row : rows) EXPECT_EQ(textOf(row.file), row.pixels) << row.what;
}

TEST(Gif, LongPicturesOfAllDepthsAreReadBeyondTheLastCode) {
    for (int bits = 1; bits <= 8; ++bits)
        for (const bool even : {false, true}) {
            FileBytes indices(400 * 300);
            uint32_t state = 1;
            for (uint8_t& index : indices) {
                state = state * 1664525 + 1013904223;
                index = even ? 1 : uint8_t(state >> 24 & ((1u << bits) - 1));
            }
            Picture picture;
            const FileBytes file = gif(400, 300, bits, {}, place(0, 0, 400, 300),
                                       packed(indices, uint32_t(std::max(bits, 2))));
            const Failure failure = readBytes(gifCodec, file, picture);
            ASSERT_FALSE(failure) << *failure;
            EXPECT_FALSE(picture.mask);
            for (size_t i = 0; i < indices.size(); ++i)
                ASSERT_EQ(picture.samples[i * 4], indices[i]) << "depth " << bits << " pixel " << i;
        }
}

TEST(Gif, WhatIsDamagedIsRefusedInWords) {
    const FileBytes whole = place(0, 0, 2, 2);
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("GIF88a", FileBytes(20)), "not a GIF picture"},
        {canvas(2, 2, 2), "the file ends early"},
        {gif(2, 2, 2, {}, {}, {}), "the file holds no picture"},
        {gif(2, 2, 2, {0x55}, whole, {}), "the file is damaged: a block of an unknown kind"},
        {gif(2, 2, 0, {}, whole, packed({1})), "the file is damaged: no colours"},
        {gif(2, 2, 2, {}, whole, {0}), "the file is damaged: codes of 0 bits"},
        {gif(2, 2, 2, {}, whole, {12}), "the file is damaged: codes of 12 bits"},
        {gif(2, 2, 2, {}, whole, {2, 1, 0x3C, 0}),
         "the file is damaged: a code that nothing stands for"},
        {gif(2, 2, 2, {}, whole, {9, 2, 44, 1, 0}),
         "the file is damaged: a code that nothing stands for"},
        {gif(1, 1, 2, {}, place(0, 0, 65535, 65535), packed({1})),
         "the file is damaged: a picture far larger than its canvas"},
        {gif(65535, 65535, 2, {}, whole, packed({1})),
         "the picture is too large: it would take over 1 GB"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(gifCodec, row.file), row.failure);
}

TEST(Gif, AFileIsKnownByItsStart) {
    EXPECT_TRUE(gifCodec.recognises(fileOf("GIF87a")));
    EXPECT_TRUE(gifCodec.recognises(fileOf("GIF89a")));
    EXPECT_FALSE(gifCodec.recognises(fileOf("GIF88a")));
}

TEST(Gif, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes file =
        gif(2, 2, 2, thirdIsTransparent, place(0, 0, 2, 2), packed({0, 1, 2, 3}));
    EXPECT_EQ(failureOf(gifCodec, file), "");
    expectEveryCutFails(gifCodec, file, file.size() - 2);  // behind the last piece
    expectSpoiltBytesDoNoHarm(gifCodec, file, file.size());
}

}  // namespace

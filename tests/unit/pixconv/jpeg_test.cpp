// JPEG files made by hand: blocks of one colour each, marks beside the picture, damage.
#include "jpeg_marks.h"

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

void segment(FileBytes& file, uint8_t marker, const FileBytes& body) {
    file += FileBytes{0xFF, marker};
    file += bigEndian(body.size() + 2, 2);
    file += body;
}

// Bits of the picture data, the highest first. A byte of ones is followed by a zero byte.
struct Bits {
    FileBytes bytes;
    uint32_t held = 0;
    int count = 0;
    void put(uint32_t value, int bits) {
        while (bits-- > 0) {
            held = held << 1 | (value >> bits & 1);
            if (++count < 8) continue;
            bytes.push_back(uint8_t(held));
            if (uint8_t(held) == 0xFF) bytes.push_back(0);
            held = 0;
            count = 0;
        }
    }
    FileBytes finish() {
        while (count != 0) put(1, 1);
        return bytes;
    }
};

// What comes before the frame; `channels` samples for each block of 8 x 8, a row of blocks after
// the other.
struct Jpeg {
    size_t blocksWide, blocksHigh;
    std::vector<std::vector<int>> blocks;
    FileBytes marks = {};
    size_t blocksStored = SIZE_MAX;  // fewer: the end of the image comes early

    FileBytes bytes() const {
        const size_t channels = blocks[0].size();
        FileBytes file{0xFF, 0xD8};
        file += marks;
        FileBytes steps(65, 8);  // a step of the average is one of the sample
        steps[0] = 0;
        segment(file, 0xDB, steps);
        FileBytes frame{8};
        frame += bigEndian(blocksHigh * 8, 2);
        frame += bigEndian(blocksWide * 8, 2);
        frame.push_back(uint8_t(channels));
        for (size_t i = 0; i < channels; ++i) frame += FileBytes{uint8_t(i + 1), 0x11, 0};
        segment(file, 0xC0, frame);
        // Averages: twelve codes of four bits, which are the number of bits that follow.
        segment(file, 0xC4, {0x00, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0,  0, 0,
                             0,    0, 0, 1, 2,  3, 4, 5, 6, 7, 8, 9, 10, 11});
        // All else: one code, the end of the block.
        segment(file, 0xC4, {0x10, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        FileBytes scan{uint8_t(channels)};
        for (size_t i = 0; i < channels; ++i) scan += FileBytes{uint8_t(i + 1), 0};
        scan += FileBytes{0, 63, 0};
        segment(file, 0xDA, scan);
        file += data(channels);
        return file += FileBytes{0xFF, 0xD9};
    }

 private:
    FileBytes data(size_t channels) const {
        Bits bits;
        std::vector<int> before(channels, 128);
        for (size_t i = 0; i < std::min(blocksStored, blocks.size()); ++i)
            for (size_t channel = 0; channel < channels; ++channel) {
                const int change = blocks[i][channel] - before[channel];
                before[channel] = blocks[i][channel];
                int size = 0;
                while (std::abs(change) >> size) ++size;
                bits.put(uint32_t(size), 4);
                bits.put(uint32_t(change < 0 ? change + (1 << size) - 1 : change), size);
                bits.put(0, 1);
            }
        return bits.finish();
    }
};

FileBytes exif(bool big, uint32_t orientation, uint32_t type = 3, uint32_t count = 1) {
    FileBytes body = fileOf(std::string("Exif\0\0", 6));
    const auto put = [&](uint32_t value, int bytes) {
        body += big ? bigEndian(value, bytes) : littleEndian(value, bytes);
    };
    body += big ? "MM" : "II";
    put(42, 2);
    put(8, 4);
    put(2, 2);  // entries
    put(0x10F, 2);
    put(2, 2);
    put(4, 4);
    put(0x41424300, 4);
    put(0x112, 2);
    put(type, 2);
    put(count, 4);
    put(orientation, 2);
    put(0, 2);
    put(0, 4);
    return body;
}

FileBytes marked(uint8_t marker, const FileBytes& body) {
    FileBytes bytes;
    segment(bytes, marker, body);
    return bytes;
}

FileBytes inkMark(uint8_t transform) {
    return marked(0xEE, fileOf("Adobe", {0, 100, 0, 0, 0, 0, transform}));
}

// The samples of the first pixel of each block.
std::vector<int> blocksOf(const Picture& picture, size_t channels) {
    std::vector<int> values;
    for (uint32_t y = 0; y < picture.height; y += 8)
        for (uint32_t x = 0; x < picture.width; x += 8)
            for (size_t i = 0; i < channels; ++i) values.push_back(picture.row(y)[x * 4 + i]);
    return values;
}

Jpeg sixBlocks() { return {3, 2, {{10}, {20}, {30}, {40}, {50}, {60}}}; }

TEST(Jpeg, PicturesAreTurnedUprightAsTheirCameraSays) {
    struct Row {
        uint32_t orientation, width;
        std::vector<int> values;
    };
    const Row rows[] = {
        {1, 24, {10, 20, 30, 40, 50, 60}}, {2, 24, {30, 20, 10, 60, 50, 40}},
        {3, 24, {60, 50, 40, 30, 20, 10}}, {4, 24, {40, 50, 60, 10, 20, 30}},
        {5, 16, {10, 40, 20, 50, 30, 60}}, {6, 16, {40, 10, 50, 20, 60, 30}},
        {7, 16, {60, 30, 50, 20, 40, 10}}, {8, 16, {30, 60, 20, 50, 10, 40}},
        {0, 24, {10, 20, 30, 40, 50, 60}}, {9, 24, {10, 20, 30, 40, 50, 60}},
    };
    for (const bool big : {false, true})
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(row.orientation) + (big ? " big" : " little"));
            Jpeg file = sixBlocks();
            file.marks = marked(0xE0, FileBytes(14));
            file.marks += marked(0xE1, fileOf("http://other data"));
            file.marks += marked(0xE1, exif(big, row.orientation));
            Picture picture;
            const Failure failure = readBytes(jpegCodec, file.bytes(), picture);
            ASSERT_FALSE(failure) << *failure;
            EXPECT_EQ(picture.width, row.width);
            EXPECT_EQ(blocksOf(picture, 1), row.values);
        }
}

TEST(Jpeg, AnOrientationThatCannotBeReadIsNone) {
    for (const bool big : {false, true}) {
        const FileBytes good = exif(big, 6);
        EXPECT_EQ(orientationOfExif(good), 6);
        EXPECT_EQ(orientationOfExif(exif(big, 6, 4)), 1);
        EXPECT_EQ(orientationOfExif(exif(big, 6, 3, 2)), 1);
        for (size_t size = 0; size < 6 + 8 + 2 + 12 + 12; ++size)
            EXPECT_EQ(orientationOfExif({good.data(), size}), 1) << size;
        for (size_t at = 0; at < good.size(); ++at)
            for (const uint8_t flip : {0x01, 0x80, 0xFF}) {
                const FileBytes kept = good;
                // In memory of its own, where reading past the end is noticed.
                FileBytes spoilt(kept.begin(), kept.end());
                spoilt[at] ^= flip;
                const int orientation = orientationOfExif(spoilt);
                EXPECT_TRUE(orientation >= 1 && orientation <= 8);
            }
    }
}

TEST(Jpeg, InksAreLightFilteredByAllFour) {
    // Without the mark 0 is none. Cyan takes red, magenta green, yellow blue, black all of them.
    const std::vector<std::vector<int>> none{{0, 0, 0, 0}}, half{{0, 255, 0, 127}};
    const std::vector<std::vector<int>> noneInverted{{255, 255, 255, 255}},
        halfInverted{{255, 0, 255, 128}};
    // Inverted inks as brightness and two differences: none of cyan, magenta and yellow.
    const std::vector<std::vector<int>> luminance{{200, 128, 128, 255}};
    struct Row {
        const char* what;
        Jpeg file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"none", {1, 1, none}, {255, 255, 255, 255}},
        {"magenta and half of black", {1, 1, half}, {128, 0, 128, 255}},
        {"none, inverted", {1, 1, noneInverted, inkMark(0)}, {255, 255, 255, 255}},
        {"magenta and half of black, inverted",
         {1, 1, halfInverted, inkMark(0)},
         {128, 0, 128, 255}},
        {"as brightness", {1, 1, luminance, inkMark(2)}, {55, 55, 55, 255}},
    };
    for (const Row& row : rows) {
        Picture picture;
        const Failure failure = readBytes(jpegCodec, row.file.bytes(), picture);
        ASSERT_FALSE(failure) << *failure;
        EXPECT_EQ(blocksOf(picture, 4), row.samples) << row.what;
        EXPECT_TRUE(picture.colour);
        EXPECT_FALSE(picture.mask);
    }
}

TEST(Jpeg, AnEndThatComesEarlyIsDamage) {
    Jpeg file{8, 8, {}};
    for (int i = 0; i < 64; ++i) file.blocks.push_back({i % 2 ? 20 : 230});
    EXPECT_EQ(failureOf(jpegCodec, file.bytes()), "");
    for (const size_t stored : {0, 1, 20, 60}) {
        file.blocksStored = stored;
        EXPECT_EQ(failureOf(jpegCodec, file.bytes()), "the picture data is damaged") << stored;
    }
}

TEST(Jpeg, ATableOfMoreCodesThanThereAreIsRefused) {
    FileBytes table(17 + 16 * 255, 0xFF);
    table[0] = 0;
    Jpeg before = sixBlocks();
    before.marks = marked(0xC4, table);
    EXPECT_NE(failureOf(jpegCodec, before.bytes()), "");
    // Behind the first scan, in the place of the end.
    FileBytes after = sixBlocks().bytes();
    after.pop_back();
    after.pop_back();
    after += marked(0xC4, table);
    after += FileBytes{0xFF, 0xD9};
    EXPECT_NE(failureOf(jpegCodec, after), "");
}

TEST(Jpeg, SpoiltMarksDoNoHarm) {
    Jpeg file = sixBlocks();
    file.marks = marked(0xE1, exif(true, 6));
    expectSpoiltBytesDoNoHarm(jpegCodec, file.bytes(), 400);
}

}  // namespace

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

// The header of a film scan: numbers put into it in one byte order.
struct Header {
    bool little = false;
    FileBytes bytes = FileBytes(2048);

    void put16(size_t at, uint32_t number) {
        bytes[at + (little ? 0 : 1)] = uint8_t(number);
        bytes[at + (little ? 1 : 0)] = uint8_t(number >> 8);
    }
    void put32(size_t at, uint32_t number) {
        put16(at + (little ? 2 : 0), number >> 16);
        put16(at + (little ? 0 : 2), number);
    }
};

struct Element {
    int kind, bits, packing;
    uint32_t place = 2048;
    uint32_t padding = 0;
};

FileBytes words(std::initializer_list<uint32_t> numbers, bool little = false) {
    FileBytes bytes;
    for (const uint32_t number : numbers)
        for (int i = 0; i < 4; ++i)
            bytes.push_back(uint8_t(number >> (little ? 8 * i : 24 - 8 * i)));
    return bytes;
}

Header dpxHeader(int width, int height, const std::vector<Element>& elements, bool little = false) {
    Header header{little};
    header.put32(0, 0x53445058);
    header.put32(4, 2048);
    header.put32(16, 0xFFFFFFFF);
    header.put16(770, uint32_t(elements.size()));
    header.put32(772, uint32_t(width));
    header.put32(776, uint32_t(height));
    for (size_t i = 0; i < elements.size(); ++i) {
        const size_t at = 780 + i * 72;
        header.bytes[at + 20] = uint8_t(elements[i].kind);
        header.bytes[at + 23] = uint8_t(elements[i].bits);
        header.put16(at + 24, uint32_t(elements[i].packing));
        header.put32(at + 28, elements[i].place);
        header.put32(at + 32, elements[i].padding);
    }
    return header;
}

FileBytes dpx(int width, int height, const std::vector<Element>& elements, const FileBytes& image,
              bool little = false) {
    FileBytes bytes = dpxHeader(width, height, elements, little).bytes;
    return bytes += image;
}

constexpr uint32_t packed(uint32_t a, uint32_t b, uint32_t c, int unused) {
    return (a << 20 | b << 10 | c) << unused;
}

// A code of 10 bits in 16.
int ten(int code) { return code << 6 | code >> 4; }
int twelve(int code) { return code << 4 | code >> 8; }

TEST(Dpx, EveryLayoutOfCodesIsRead) {
    constexpr int rgb = 50, rgba = 51, abgr = 52, luma = 6;
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const std::vector<int> threeTens{ten(1), ten(512), ten(1023), 65535};
    const Row rows[] = {
        {"8 bits", dpx(1, 1, {{rgb, 8, 0}}, {1, 2, 3, 0}), {1, 2, 3, 255}},
        {"8 bits, mask last", dpx(1, 1, {{rgba, 8, 1}}, {1, 2, 3, 4}), {1, 2, 3, 4}},
        {"8 bits, mask first", dpx(1, 1, {{abgr, 8, 0}}, {4, 3, 2, 1}), {1, 2, 3, 4}},
        {"8 bits of grey",
         dpx(1, 2, {{luma, 8, 0}}, {9, 0, 0, 0, 8, 0, 0, 0}),
         {9, 9, 9, 255, 8, 8, 8, 255}},
        {"8 bits, rows not filled",
         dpx(1, 2, {{rgb, 8, 0}}, {1, 2, 3, 4, 5, 6}),
         {1, 2, 3, 255, 4, 5, 6, 255}},
        {"8 bits, padded rows",
         dpx(1, 2, {{rgb, 8, 0, 2048, 2}}, {1, 2, 3, 0, 9, 9, 4, 5, 6, 0}),
         {1, 2, 3, 255, 4, 5, 6, 255}},
        {"10 bits, left", dpx(1, 1, {{rgb, 10, 1}}, words({packed(1, 512, 1023, 2)})), threeTens},
        {"10 bits, right", dpx(1, 1, {{rgb, 10, 2}}, words({packed(1, 512, 1023, 0)})), threeTens},
        {"10 bits, left, little-endian",
         dpx(1, 1, {{rgb, 10, 1}}, words({packed(1, 512, 1023, 2)}, true), true), threeTens},
        {"10 bits, right, little-endian",
         dpx(1, 1, {{rgb, 10, 2}}, words({packed(1, 512, 1023, 0)}, true), true), threeTens},
        {"10 bits with mask, over words",
         dpx(1, 1, {{rgba, 10, 1}}, words({packed(1, 2, 3, 2), packed(4, 0, 0, 2)})),
         {ten(1), ten(2), ten(3), ten(4)}},
        {"10 bits of grey, the first code lowest",
         dpx(2, 1, {{luma, 10, 1}}, words({packed(0, 7, 5, 2)})),
         {ten(5), ten(5), ten(5), 65535, ten(7), ten(7), ten(7), 65535}},
        {"10 bits of grey, right",
         dpx(1, 1, {{luma, 10, 2}}, words({5})),
         {ten(5), ten(5), ten(5), 65535}},
        {"10 bits, packed, the first code lowest",
         dpx(1, 1, {{rgba, 10, 0}}, words({1 | 512 << 10 | 1023 << 20 | (5u & 3) << 30, 5 >> 2})),
         {ten(1), ten(512), ten(1023), ten(5)}},
        {"12 bits, left",
         dpx(1, 1, {{rgb, 12, 1}}, {0x12, 0x30, 0xFF, 0xF0, 0, 0x10, 0, 0}),
         {twelve(0x123), 65535, twelve(1), 65535}},
        {"12 bits, right",
         dpx(1, 1, {{rgb, 12, 2}}, {0x01, 0x23, 0x0F, 0xFF, 0, 1, 0, 0}),
         {twelve(0x123), 65535, twelve(1), 65535}},
        {"12 bits, left, little-endian",
         dpx(1, 1, {{rgb, 12, 1}}, {0x30, 0x12, 0xF0, 0xFF, 0x10, 0, 0, 0}, true),
         {twelve(0x123), 65535, twelve(1), 65535}},
        {"12 bits, packed",
         dpx(1, 1, {{rgb, 12, 0}}, words({0x45FFF123, 0x6})),
         {twelve(0x123), 65535, twelve(0x645), 65535}},
        {"16 bits",
         dpx(1, 1, {{rgb, 16, 0}}, {1, 2, 3, 4, 5, 6, 0, 0}),
         {0x102, 0x304, 0x506, 65535}},
        {"16 bits, little-endian",
         dpx(1, 1, {{rgba, 16, 0}}, {2, 1, 4, 3, 6, 5, 8, 7}, true),
         {0x102, 0x304, 0x506, 0x708}},
        {"16 bits, rows not filled",
         dpx(1, 2, {{rgb, 16, 0}}, {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6}),
         {1, 2, 3, 65535, 4, 5, 6, 65535}},
        {"an element for each channel",
         dpx(1, 1, {{1, 8, 0, 2048}, {2, 8, 0, 2052}, {3, 8, 0, 2056}, {4, 8, 0, 2060}},
             {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0}),
         {1, 2, 3, 4}},
        {"colour, then a mask whose place is not told",
         dpx(1, 2, {{rgb, 8, 0, 0}, {4, 8, 0, 0xFFFFFFFF}},
             {1, 2, 3, 0, 4, 5, 6, 0, 7, 0, 0, 0, 8, 0, 0, 0}),
         {1, 2, 3, 7, 4, 5, 6, 8}},
        {"8 bits of mask with 16 of colour",
         dpx(1, 1, {{rgb, 16, 0, 2048}, {4, 8, 0, 2056}}, {1, 2, 3, 4, 5, 6, 0, 0, 0x81, 0, 0, 0}),
         {0x102, 0x304, 0x506, 0x8181}},
        {"the second of the same kind is not read",
         dpx(1, 1, {{rgb, 8, 0, 2048}, {rgb, 8, 0, 2052}}, {1, 2, 3, 0, 4, 5, 6, 0}),
         {1, 2, 3, 255}},
        {"colour, then what is not supported, then a mask",
         dpx(1, 1, {{rgb, 8, 0, 2048}, {100, 8, 0, 2056}, {4, 8, 0, 2052}},
             {1, 2, 3, 0, 9, 0, 0, 0}),
         {1, 2, 3, 9}},
        {"colour, then a mask of 32 bits",
         dpx(1, 1, {{rgb, 8, 0, 2048}, {4, 32, 0, 2052}}, {1, 2, 3, 0, 9, 0, 0, 0}),
         {1, 2, 3, 255}},
        {"a mask whose place is not told, behind what is not supported",
         dpx(1, 1, {{rgb, 8, 0, 2048}, {100, 8, 0, 0}, {4, 8, 0, 0}}, {1, 2, 3, 0, 9, 0, 0, 0}),
         {1, 2, 3, 255}},
        {"all that may be unknown is",
         dpx(1, 1, {{rgb, 8, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF}}, {1, 2, 3}),
         {1, 2, 3, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(dpxCodec, row.file), row.samples) << row.what;
}

// Six pixels, stored as 1 2 3 and 4 5 6, in the picture's order.
struct Direction {
    int code;
    std::vector<int> upright;
};

template <class Make>
void expectDirections(const Codec& codec, const std::vector<Direction>& rows, Make file) {
    for (const Direction& row : rows) {
        Picture picture;
        const Failure failure = readBytes(codec, file(row.code), picture);
        ASSERT_FALSE(failure) << *failure;
        EXPECT_EQ(picture.width, row.code < 4 ? 3u : 2u);
        std::vector<int> reds;
        for (size_t i = 0; i < 24; i += 4)
            reds.push_back(picture.wide ? picture.wideSamples[i] >> 6 : picture.samples[i]);
        EXPECT_EQ(reds, row.upright) << row.code;
    }
}

TEST(Dpx, APictureIsShownUprightWhateverItsDirection) {
    const std::vector<Direction> rows = {{0, {1, 2, 3, 4, 5, 6}}, {1, {3, 2, 1, 6, 5, 4}},
                                         {2, {4, 5, 6, 1, 2, 3}}, {3, {6, 5, 4, 3, 2, 1}},
                                         {4, {1, 4, 2, 5, 3, 6}}, {5, {4, 1, 5, 2, 6, 3}},
                                         {6, {3, 6, 2, 5, 1, 4}}, {7, {6, 3, 5, 2, 4, 1}}};
    expectDirections(dpxCodec, rows, [](int code) {
        Header header = dpxHeader(3, 2, {{6, 8, 0}});
        header.put16(768, uint32_t(code));
        return header.bytes += FileBytes{1, 2, 3, 0, 4, 5, 6, 0};
    });
}

TEST(Dpx, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    Header sign = dpxHeader(1, 1, {{50, 8, 0}}), runs = sign, turned = sign, inHeader = sign;
    sign.put32(780, 1);
    runs.put16(780 + 26, 1);
    turned.put16(768, 8);
    inHeader.put32(780 + 28, 800);
    Header longer = dpxHeader(1, 2, {{50, 8, 0}});
    longer.put32(16, 2056);
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("GIF8"), "not a DPX picture"},
        {fileOf("SD"), "the file ends early: in its header"},
        {fileOf("SDPX", FileBytes(1000)), "the file ends early: in its header"},
        {dpx(1, 1, {{100, 8, 0}}, {}),
         "DPX images of kind 100 are not supported, only red, green, blue, mask and grey"},
        {dpx(1, 1, {{50, 32, 0}}, {}), "DPX images of 32 bits in packing 0 are not supported"},
        {dpx(1, 1, {{50, 10, 7}}, {}), "DPX images of 10 bits in packing 7 are not supported"},
        {dpx(1, 1, {{1, 8, 0}, {2, 8, 0}}, FileBytes(8)),
         "the file has not all of red, green and blue"},
        {dpx(1, 1, {{1, 8, 0}, {2, 8, 0}, {3, 32, 0}}, FileBytes(16)),
         "DPX images of 32 bits in packing 0 are not supported"},
        {dpx(0, 1, {{50, 8, 0}}, {}), "the picture has no pixels"},
        {dpx(1, -1, {{50, 8, 0}}, {}),
         "the picture is too large: 1 x 4294967295 pixels, a frame has at most 65535 each way"},
        {dpx(10, 480, {{50, 8, 0}}, FileBytes(32 * 11 + 5)), "the file ends early: row 12 of 480"},
        {dpx(1, 1, {{50, 8, 0, 5000}}, {1, 2, 3, 0}), "the file ends early: row 1 of 1"},
        {dpx(1, 2, {{50, 8, 0, 2048, 0xFFFFFFF0}}, FileBytes(8)),
         "the file ends early: row 1 of 2"},
        {sign.bytes, "DPX images with signed codes are not supported"},
        {runs.bytes, "run-length encoded DPX images are not supported"},
        {turned.bytes, "the file is damaged: direction 8"},
        {inHeader.bytes, "the file is damaged: the image lies in the header"},
        // As long as rows that are not filled would be, but said to be longer.
        {longer.bytes += FileBytes(6), "the file ends early: row 2 of 2"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(dpxCodec, row.file), row.failure);
    FileBytes elements = dpxHeader(1, 1, {{50, 8, 0}}).bytes;
    elements[771] = 9;
    EXPECT_EQ(failureOf(dpxCodec, elements), "the file is damaged: 9 image elements");
}

// All codes of ten bits, as read from a file that has them.
Picture allTenBitCodes() {
    Picture picture;
    if (picture.allocate(1024, 2, true)) return picture;
    for (uint32_t y = 0; y < 2; ++y)
        for (int x = 0; x < 1024; ++x) {
            uint16_t* pixel = picture.wideRow(y) + x * 4;
            pixel[0] = uint16_t(ten(x));
            pixel[1] = uint16_t(ten(1023 - x));
            pixel[2] = uint16_t(ten(x * 7 % 1024));
            pixel[3] = 65535;
        }
    return picture;
}

TEST(Dpx, TenBitCodesSurvive) { expectRoundTrip(dpxCodec, allTenBitCodes()); }

TEST(Dpx, TheNearestCodeOfTenBitsIsWritten) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(65535, 1, true));
    for (uint32_t x = 0; x < picture.width; ++x)
        for (size_t i = 0; i < 3; ++i) picture.wideRow(0)[x * 4 + i] = uint16_t(x + 1);
    picture.filmCodes = true;  // else a Cineon file gets other codes
    for (const Codec* codec : {&dpxCodec, &cineonCodec}) {
        const FileBytes file = writtenBytes(*codec, picture);
        for (uint32_t x = 0; x < picture.width; ++x) {
            const uint8_t* word = &file[2048 + x * 4];
            const double exact = (x + 1) * 1023.0 / 65535;
            ASSERT_LE(std::abs((word[0] << 2 | word[1] >> 6) - exact), 0.5) << x;
        }
    }
}

TEST(Dpx, EightBitsSurviveInTheUpperBits) {
    const Picture picture = samplePicture(31, 5, true, false, false);
    Picture back;
    ASSERT_FALSE(readBytes(dpxCodec, writtenBytes(dpxCodec, picture), back));
    ASSERT_EQ(back.wideSamples.size(), picture.samples.size());
    for (size_t i = 0; i < picture.samples.size(); ++i)
        ASSERT_EQ(back.wideSamples[i] >> 8, picture.samples[i]);
}

TEST(Dpx, TheWrittenHeaderTellsWhatFollows) {
    const FileBytes file = writtenBytes(dpxCodec, samplePicture(3, 2, true, true, false));
    EXPECT_EQ(file.size(), 2048u + 3 * 2 * 4);
    EXPECT_EQ(FileBytes(file.begin(), file.begin() + 8), fileOf("SDPX", {0, 0, 8, 0}));
    EXPECT_EQ(FileBytes(file.begin() + 16, file.begin() + 20), (FileBytes{0, 0, 8, 24}));
    EXPECT_EQ(FileBytes(file.begin() + 800, file.begin() + 806), (FileBytes{50, 6, 6, 10, 0, 1}));
    Picture film = samplePicture(3, 2, true, false, false);
    film.filmCodes = true;
    const FileBytes density = writtenBytes(dpxCodec, film);
    EXPECT_EQ(FileBytes(density.begin() + 800, density.begin() + 803), (FileBytes{50, 1, 1}));
}

TEST(Dpx, FilmCodesAreToldByTheirCurve) {
    for (const int curve : {0, 1, 2, 3, 4, 6, 255}) {
        FileBytes file = dpx(1, 1, {{50, 8, 0}}, {1, 2, 3, 0});
        file[801] = uint8_t(curve);
        Picture picture;
        ASSERT_FALSE(readBytes(dpxCodec, file, picture));
        EXPECT_EQ(picture.filmCodes, curve == 1 || curve == 3) << curve;
    }
}

TEST(Dpx, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes file = writtenBytes(dpxCodec, samplePicture(5, 3, true, false, false));
    expectEveryCutFails(dpxCodec, file, file.size());
    expectSpoiltBytesDoNoHarm(dpxCodec, file, 860);
    expectSpoiltBytesDoNoHarm(dpxCodec,
                              dpx(5, 3, {{6, 10, 0}, {4, 12, 1, 2048}}, FileBytes(100), true), 900);
}

TEST(Dpx, AFileIsKnownByItsStart) {
    EXPECT_TRUE(dpxCodec.recognises(fileOf("SDPX")));
    EXPECT_TRUE(dpxCodec.recognises(fileOf("XPDS")));
    EXPECT_FALSE(dpxCodec.recognises(fileOf("SDP")));
    EXPECT_FALSE(dpxCodec.recognises(fileOf("PXSD")));
}

Header cineonHeader(int width, int height, int packing, bool little = false) {
    Header header{little};
    header.put32(0, 0x802A5FD7);
    header.put32(4, 2048);
    header.bytes[193] = 3;
    for (size_t at = 196; at < 196 + 3 * 28; at += 28) {
        header.bytes[at + 2] = 10;
        header.put32(at + 4, uint32_t(width));
        header.put32(at + 8, uint32_t(height));
    }
    header.bytes[681] = uint8_t(packing);
    return header;
}

TEST(Cineon, BothByteOrdersAndJustificationsAreRead) {
    for (const bool little : {false, true})
        for (const int packing : {5, 6}) {
            FileBytes file = cineonHeader(1, 1, packing, little).bytes;
            file += words({packed(1, 512, 1023, packing == 5 ? 2 : 0)}, little);
            EXPECT_EQ(samplesOf(cineonCodec, file),
                      (std::vector<int>{ten(1), ten(512), ten(1023), 65535}));
        }
}

TEST(Cineon, RowsMayBePadded) {
    Header header = cineonHeader(1, 2, 6);
    header.put32(684, 4);
    EXPECT_EQ(samplesOf(cineonCodec, header.bytes += words({1, 99, 2})),
              (std::vector<int>{0, 0, ten(1), 65535, 0, 0, ten(2), 65535}));
}

TEST(Cineon, APictureIsShownUprightWhateverItsDirection) {
    const std::vector<Direction> rows = {{0, {1, 2, 3, 4, 5, 6}}, {1, {4, 5, 6, 1, 2, 3}},
                                         {2, {3, 2, 1, 6, 5, 4}}, {3, {6, 5, 4, 3, 2, 1}},
                                         {4, {1, 4, 2, 5, 3, 6}}, {5, {4, 1, 5, 2, 6, 3}},
                                         {6, {3, 6, 2, 5, 1, 4}}, {7, {6, 3, 5, 2, 4, 1}}};
    expectDirections(cineonCodec, rows, [](int code) {
        Header header = cineonHeader(3, 2, 6);
        header.bytes[192] = uint8_t(code);
        return header.bytes += words({1u << 20, 2u << 20, 3u << 20, 4u << 20, 5u << 20, 6u << 20});
    });
}

TEST(Cineon, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    struct Row {
        size_t at;
        uint8_t byte;
        const char* failure;
    };
    const Row rows[] = {
        {0, 0, "not a Cineon picture"},
        {6, 1, "the file is damaged: the image lies in the header"},
        {6, 9, "the file ends early: row 1 of 1"},
        {192, 8, "the file is damaged: direction 8"},
        {193, 1, "Cineon pictures of 1 channels are not supported, only red, green and blue"},
        {198, 8, "Cineon pictures of 8 bits are not supported"},
        {203, 9, "the file is damaged: its channels differ in size"},
        {680, 2, "Cineon pictures in separate planes are not supported"},
        {681, 1, "Cineon pictures in packing 1 are not supported"},
        {682, 1, "Cineon pictures with signed codes are not supported"},
    };
    for (const Row& row : rows) {
        FileBytes file = cineonHeader(1, 1, 5).bytes;
        file += words({0});
        EXPECT_EQ(failureOf(cineonCodec, file), "");
        file[row.at] = row.byte;
        EXPECT_EQ(failureOf(cineonCodec, file), row.failure) << row.at;
    }
}

TEST(Cineon, TenBitCodesSurvive) {
    Picture codes = allTenBitCodes();
    codes.filmCodes = true;
    expectRoundTrip(cineonCodec, codes);
}

TEST(Cineon, APictureGetsCodesOfFilm) {
    Picture picture, back;
    ASSERT_FALSE(picture.allocate(3, 1, false));
    for (size_t x = 0; x < 3; ++x)
        for (size_t i = 0; i < 3; ++i) picture.row(0)[x * 4 + i] = uint8_t(x * 255 / 2);
    ASSERT_FALSE(readBytes(cineonCodec, writtenBytes(cineonCodec, picture), back));
    EXPECT_TRUE(back.filmCodes);
    EXPECT_EQ(back.wideRow(0)[0] >> 6, 95);
    EXPECT_EQ(back.wideRow(0)[4] >> 6, 488);  // light of 0.212
    EXPECT_EQ(back.wideRow(0)[8] >> 6, 685);
}

TEST(Cineon, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes file = writtenBytes(cineonCodec, samplePicture(5, 3, true, false, false));
    expectEveryCutFails(cineonCodec, file, file.size());
    expectSpoiltBytesDoNoHarm(cineonCodec, file, 720);
}

}  // namespace

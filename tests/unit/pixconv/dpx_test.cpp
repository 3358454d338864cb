#include "film_scan_bytes.h"

using namespace vistel;
using namespace vistel::test;

namespace {

struct Element {
    int kind, bits, packing;
    uint32_t place = 2048;
    uint32_t padding = 0;
};

FilmScanHeader dpxHeader(int width, int height, const std::vector<Element>& elements,
                         bool little = false) {
    FilmScanHeader header{little};
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

TEST(Dpx, APictureIsShownUprightWhateverItsDirection) {
    const std::vector<Direction> rows = {{0, {1, 2, 3, 4, 5, 6}}, {1, {3, 2, 1, 6, 5, 4}},
                                         {2, {4, 5, 6, 1, 2, 3}}, {3, {6, 5, 4, 3, 2, 1}},
                                         {4, {1, 4, 2, 5, 3, 6}}, {5, {4, 1, 5, 2, 6, 3}},
                                         {6, {3, 6, 2, 5, 1, 4}}, {7, {6, 3, 5, 2, 4, 1}}};
    expectDirections(dpxCodec, rows, [](int code) {
        FilmScanHeader header = dpxHeader(3, 2, {{6, 8, 0}});
        header.put16(768, uint32_t(code));
        return header.bytes += FileBytes{1, 2, 3, 0, 4, 5, 6, 0};
    });
}

TEST(Dpx, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    FilmScanHeader sign = dpxHeader(1, 1, {{50, 8, 0}}), runs = sign, turned = sign,
                   inHeader = sign;
    sign.put32(780, 1);
    runs.put16(780 + 26, 1);
    turned.put16(768, 8);
    inHeader.put32(780 + 28, 800);
    FilmScanHeader longer = dpxHeader(1, 2, {{50, 8, 0}});
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

}  // namespace

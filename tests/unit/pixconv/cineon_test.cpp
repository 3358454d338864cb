#include "film_scan_bytes.h"

using namespace vistel;
using namespace vistel::test;

namespace {

FilmScanHeader cineonHeader(int width, int height, int packing, bool little = false) {
    FilmScanHeader header{little};
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
    FilmScanHeader header = cineonHeader(1, 2, 6);
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
        FilmScanHeader header = cineonHeader(3, 2, 6);
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

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

constexpr int bitmapMode = 0, greyMode = 1, indexed = 2, rgb = 3, cmyk = 4, duotone = 8, lab = 9;

FileBytes document(int mode, int bits, int channels, int width, int height, int compression,
                   const FileBytes& image, const FileBytes& palette = {}, int version = 1) {
    FileBytes bytes = fileOf("8BPS", bigEndian(uint64_t(version), 2));
    bytes += FileBytes(6);
    bytes += bigEndian(uint64_t(channels), 2);
    bytes += bigEndian(uint64_t(height), 4);
    bytes += bigEndian(uint64_t(width), 4);
    bytes += bigEndian(uint64_t(bits), 2);
    bytes += bigEndian(uint64_t(mode), 2);
    bytes += bigEndian(palette.size(), 4);
    bytes += palette;
    bytes += bigEndian(3, 4);  // resources
    bytes += FileBytes{1, 2, 3};
    bytes += bigEndian(2, version == 2 ? 8 : 4);  // layers
    bytes += FileBytes{4, 5};
    bytes += bigEndian(uint64_t(compression), 2);
    return bytes += image;
}

FileBytes colours() {
    FileBytes palette(768);
    palette[5] = 1;
    palette[256 + 5] = 2;
    palette[512 + 5] = 3;
    return palette;
}

TEST(Psd, TheFlattenedPictureIsRead) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"colour", document(rgb, 8, 3, 2, 1, 0, {1, 4, 2, 5, 3, 6}), {1, 2, 3, 255, 4, 5, 6, 255}},
        {"colour and mask", document(rgb, 8, 4, 1, 1, 0, {1, 2, 3, 4}), {1, 2, 3, 4}},
        {"more channels", document(rgb, 8, 6, 1, 1, 0, {1, 2, 3, 4, 5, 6}), {1, 2, 3, 4}},
        {"grey", document(greyMode, 8, 1, 1, 2, 0, {7, 8}), {7, 7, 7, 255, 8, 8, 8, 255}},
        {"grey and mask", document(greyMode, 8, 2, 1, 1, 0, {7, 8}), {7, 7, 7, 8}},
        {"a palette",
         document(indexed, 8, 1, 2, 1, 0, {5, 0}, colours()),
         {1, 2, 3, 255, 0, 0, 0, 255}},
        {"16 bits",
         document(rgb, 16, 3, 1, 1, 0, {1, 2, 3, 4, 5, 6}),
         {0x102, 0x304, 0x506, 65535}},
        {"packed",
         document(greyMode, 8, 1, 4, 2, 1, {0, 2, 0, 6, 0xFD, 9, 0x80, 1, 1, 2, 0xFF, 3}),
         {9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255,
          1, 1, 1, 255, 2, 2, 2, 255, 3, 3, 3, 255, 3, 3, 3, 255}},
        {"packed 16 bits",
         document(greyMode, 16, 1, 1, 1, 1, {0, 3, 1, 7, 8}),
         {0x708, 0x708, 0x708, 65535}},
        {"black and white",
         document(bitmapMode, 1, 1, 2, 1, 0, {0x40}),
         {255, 255, 255, 255, 0, 0, 0, 255}},
        {"duotone", document(duotone, 8, 1, 1, 1, 0, {9}, {1, 2, 3}), {9, 9, 9, 255}},
        {"inks", document(cmyk, 8, 4, 1, 1, 0, {255, 0, 128, 255}), {255, 0, 128, 255}},
        {"inks and half of black",
         document(cmyk, 8, 4, 1, 1, 0, {255, 0, 255, 128}),
         {128, 0, 128, 255}},
        {"inks and mask", document(cmyk, 8, 5, 1, 1, 0, {255, 0, 128, 255, 7}), {255, 0, 128, 7}},
        {"inks of 16 bits",
         document(cmyk, 16, 4, 1, 1, 0, {255, 255, 0, 0, 1, 2, 255, 255}),
         {65535, 0, 0x102, 65535}},
        {"Lab",
         document(lab, 8, 3, 2, 1, 0, {255, 0, 128, 128, 128, 128}),
         {255, 255, 255, 255, 0, 0, 0, 255}},
        {"light",
         document(greyMode, 32, 2, 1, 1, 0, {0x3F, 0, 0, 0, 0x3F, 0, 0, 0}),
         {188, 188, 188, 128}},
        {"large", document(greyMode, 8, 1, 1, 1, 1, {0, 0, 0, 2, 0, 9}, {}, 2), {9, 9, 9, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(psdCodec, row.file), row.samples) << row.what;
}

TEST(Psd, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    FileBytes longLayers = document(greyMode, 8, 1, 1, 1, 0, {1});
    longLayers[26 + 4 + 7] = 0xFF;
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("8BPS"), "the file ends early: in its header"},
        {fileOf("8BIM", FileBytes(30)), "not a Photoshop document"},
        {document(7, 8, 4, 1, 1, 0, {}), "Photoshop documents in multichannel are not supported"},
        {document(cmyk, 32, 4, 1, 1, 0, {}), "Photoshop documents of 32 bits are not supported"},
        {document(bitmapMode, 8, 1, 1, 1, 0, {}), "Photoshop documents of 8 bits are not supported"},
        {document(cmyk, 8, 3, 1, 1, 0, {}), "the file is damaged: 3 channels"},
        {document(5, 8, 3, 1, 1, 0, {}), "the file is damaged: colour mode 5"},
        {document(rgb, 8, 2, 1, 1, 0, {}), "the file is damaged: 2 channels"},
        {document(rgb, 8, 3, 0, 1, 0, {}), "the picture has no pixels"},
        {document(rgb, 8, 3, 300000, 1, 0, {}),
         "the picture is too large: 300000 x 1 pixels, a frame has at most 65535 each way"},
        {document(greyMode, 8, 1, 1, 1, 2, {}),
         "Photoshop documents with compression 2 are not supported"},
        {document(indexed, 8, 1, 1, 1, 0, {0}, {1, 2, 3}), "the file ends early: in its palette"},
        {longLayers, "the file ends early: in its layers"},
        {document(greyMode, 8, 1, 10, 48, 0, FileBytes(115)), "the file ends early: row 12 of 48"},
        {document(greyMode, 8, 1, 1, 9, 1, FileBytes(17)), "the file ends early: in its table of rows"},
        {document(greyMode, 8, 1, 3, 1, 1, {0, 2, 0xFD, 1}), "the file is damaged: row 1 of 1"},
        {document(greyMode, 8, 1, 3, 1, 1, {0, 2, 0xFF, 1}), "the file is damaged: row 1 of 1"},
        {document(greyMode, 8, 1, 3, 1, 1, {0, 3, 2, 1, 1}), "the file is damaged: row 1 of 1"},
        {document(greyMode, 8, 1, 3, 1, 1, {0, 9, 2, 1, 1}), "the file is damaged: row 1 of 1"},
        {document(greyMode, 8, 1, 3, 1, 1, {0, 4, 2, 1, 1}), "the file ends early: row 1 of 1"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(psdCodec, row.file), row.failure);
}

TEST(Psd, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes files[] = {
        document(rgb, 16, 4, 3, 2, 0, FileBytes(48)),
        document(greyMode, 8, 1, 4, 2, 1, {0, 2, 0, 5, 0xFD, 9, 1, 1, 2, 0xFF, 3}),
        document(indexed, 8, 1, 2, 1, 0, {5, 0}, colours()),
        document(cmyk, 8, 5, 3, 2, 0, FileBytes(30)),
        document(lab, 16, 3, 3, 2, 0, FileBytes(36)),
        document(bitmapMode, 1, 1, 9, 2, 1, {0, 3, 0, 3, 1, 1, 2, 1, 3, 4}),
        document(rgb, 32, 3, 3, 2, 0, FileBytes(72)),
        document(greyMode, 8, 1, 1, 1, 1, {0, 0, 0, 2, 0, 9}, {}, 2),
    };
    for (const FileBytes& file : files) {
        EXPECT_EQ(failureOf(psdCodec, file), "");
        expectEveryCutFails(psdCodec, file, file.size());
        expectSpoiltBytesDoNoHarm(psdCodec, file, 80);
    }
}

TEST(Psd, AFileIsKnownByItsStart) {
    EXPECT_TRUE(psdCodec.recognises(fileOf("8BPS", {0, 1})));
    EXPECT_TRUE(psdCodec.recognises(fileOf("8BPS", {0, 2})));
    EXPECT_FALSE(psdCodec.recognises(fileOf("8BPS", {0, 3})));
    EXPECT_FALSE(psdCodec.recognises(fileOf("8BPS")));
}

}  // namespace

#include "codec_files.h"
#include "host/byte_order.h"

using namespace vistel;
using namespace vistel::test;

namespace {

FileBytes header(bool runs, int sampleBytes, int dimension, int width, int height, int channels) {
    FileBytes bytes(512);
    const auto put = [&](size_t at, int number) { writeBig16(&bytes[at], uint16_t(number)); };
    put(0, 474);
    bytes[2] = runs;
    bytes[3] = uint8_t(sampleBytes);
    put(4, dimension);
    put(6, width);
    put(8, height);
    put(10, channels);
    return bytes;
}

FileBytes plain(int sampleBytes, int dimension, int width, int height, int channels,
                const FileBytes& rows) {
    FileBytes bytes = header(false, sampleBytes, dimension, width, height, channels);
    return bytes += rows;
}

// A grey picture of one row in runs, its table as told or as it is.
FileBytes oneRow(int sampleBytes, int width, const FileBytes& packed, uint32_t place = 520,
                 int64_t length = -1) {
    FileBytes bytes = header(true, sampleBytes, 2, width, 1, 1);
    bytes += bigWord(place);
    bytes += bigWord(length < 0 ? uint32_t(packed.size()) : uint32_t(length));
    return bytes += packed;
}

TEST(Sgi, PlainRowsStandFromTheBottomUpPlaneAfterPlane) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;  // of the picture, top row first
    };
    const Row rows[] = {
        {"a row of grey", plain(1, 1, 2, 9, 9, {10, 20}), {10, 10, 10, 255, 20, 20, 20, 255}},
        {"two rows of grey", plain(1, 2, 1, 2, 9, {1, 2}), {2, 2, 2, 255, 1, 1, 1, 255}},
        {"grey in three dimensions", plain(1, 3, 1, 1, 1, {7}), {7, 7, 7, 255}},
        {"grey and mask", plain(1, 3, 1, 2, 2, {1, 2, 3, 4}), {2, 2, 2, 4, 1, 1, 1, 3}},
        {"colour", plain(1, 3, 1, 2, 3, {1, 2, 3, 4, 5, 6}), {2, 4, 6, 255, 1, 3, 5, 255}},
        {"colour and mask", plain(1, 3, 1, 1, 4, {1, 2, 3, 4}), {1, 2, 3, 4}},
        {"more planes", plain(1, 3, 1, 1, 5, {1, 2, 3, 4, 5}), {1, 2, 3, 4}},
        {"16 bits",
         plain(2, 2, 2, 1, 1, {1, 2, 0xFF, 0xFE}),
         {0x102, 0x102, 0x102, 65535, 0xFFFE, 0xFFFE, 0xFFFE, 65535}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(sgiCodec, row.file), row.samples) << row.what;
}

TEST(Sgi, RunsRepeatOrCopySamples) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> greys;
    };
    const Row rows[] = {
        {"a repeat", oneRow(1, 3, {3, 7, 0}), {7, 7, 7}},
        {"copies", oneRow(1, 3, {0x83, 7, 8, 9, 0}), {7, 8, 9}},
        {"both, without the end mark", oneRow(1, 4, {2, 5, 0x82, 1, 2}), {5, 5, 1, 2}},
        {"16 bits", oneRow(2, 3, {0, 2, 1, 1, 0, 0x81, 2, 2, 0, 0}), {0x101, 0x101, 0x202}},
        {"16 bits, high byte of the count ignored", oneRow(2, 2, {9, 2, 1, 1}), {0x101, 0x101}},
    };
    for (const Row& row : rows) {
        std::vector<int> greys = samplesOf(sgiCodec, row.file);
        for (size_t i = 0; i * 4 < greys.size(); ++i) greys[i] = greys[i * 4];
        greys.resize(greys.size() / 4);
        EXPECT_EQ(greys, row.greys) << row.what;
    }
}

TEST(Sgi, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    FileBytes mapped = plain(1, 2, 1, 1, 1, {0});
    mapped[107] = 1;
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("GIF89a", FileBytes(600)), "not an SGI picture"},
        {FileBytes(100), "the file ends early: in its header"},
        {header(false, 3, 1, 1, 1, 1), "planes of 3 bytes per sample are not supported"},
        {mapped, "SGI pictures with a colour map are not supported"},
        {header(false, 1, 4, 1, 1, 1), "the file is damaged: dimension 4"},
        {header(false, 1, 3, 1, 1, 0), "the file is damaged: no channels"},
        {header(false, 1, 2, 0, 1, 1), "the picture has no pixels"},
        {plain(1, 2, 10, 48, 1, FileBytes(115)), "the file ends early: row 12 of 48"},
        {header(true, 1, 2, 65535, 65535, 1), "the picture is too large: it would take over 1 GB"},
        {header(true, 1, 2, 100, 100, 1), "the file ends early: in its table of rows"},
        {oneRow(1, 3, {3, 7, 0}, 1000), "the file ends early: row 1 of 1"},
        {oneRow(1, 3, {3, 7, 0}, 0xFFFFFFFF, 0xFFFFFFFF), "the file ends early: row 1 of 1"},
        {oneRow(1, 3, {3, 7, 0}, 20), "the file is damaged: row 1 of 1"},
        {oneRow(1, 3, {4, 7, 0}), "the file is damaged: row 1 of 1"},
        {oneRow(1, 3, {2, 7, 0}), "the file is damaged: row 1 of 1"},
        {oneRow(1, 3, {0x83, 7, 7}), "the file is damaged: row 1 of 1"},
        {oneRow(1, 3, {3}), "the file is damaged: row 1 of 1"},
        {oneRow(2, 3, {0, 3, 7}), "the file is damaged: row 1 of 1"},
        {oneRow(1, 3, FileBytes(100)), "the file is damaged: row 1 of 1"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(sgiCodec, row.file), row.failure);
}

TEST(Sgi, EveryPictureSurvives) {
    for (const bool colour : {false, true})
        for (const bool mask : {false, true})
            for (const bool wide : {false, true})
                for (const uint32_t width : {1u, 2u, 3u, 127u, 128u, 129u, 600u})
                    expectRoundTrip(sgiCodec, samplePicture(width, 5, colour, mask, wide));
}

TEST(Sgi, RunsShortenEvenAreas) {
    Picture even;
    ASSERT_FALSE(even.allocate(1000, 10, false));
    even.mask = true;
    // Eight repeats of at most 127 and the end mark in each row.
    EXPECT_EQ(writtenBytes(sgiCodec, even).size(), 512u + 40 * (8 + 17));
}

TEST(Sgi, AFileIsKnownByItsStart) {
    EXPECT_TRUE(sgiCodec.recognises(header(true, 2, 1, 1, 1, 1)));
    EXPECT_FALSE(sgiCodec.recognises(header(true, 4, 1, 1, 1, 1)));
    EXPECT_FALSE(sgiCodec.recognises(FileBytes{1, 0xDA, 0}));
}

TEST(Sgi, CutFilesFail) {
    const FileBytes runs = writtenBytes(sgiCodec, samplePicture(9, 3, true, true, false));
    expectEveryCutFails(sgiCodec, runs, runs.size());
    const FileBytes grey = plain(2, 2, 5, 3, 1, FileBytes(30));
    expectEveryCutFails(sgiCodec, grey, grey.size());
}

TEST(Sgi, SpoiltFilesDoNoHarm) {
    const FileBytes runs = writtenBytes(sgiCodec, samplePicture(9, 3, true, true, true));
    expectSpoiltBytesDoNoHarm(sgiCodec, runs, runs.size());
    expectSpoiltBytesDoNoHarm(sgiCodec, plain(2, 2, 5, 3, 1, FileBytes(30)), 600);
}

}  // namespace

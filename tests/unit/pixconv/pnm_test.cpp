#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

TEST(Pnm, EveryKindIsRead) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const std::string tuples = "P7\nWIDTH 1\nHEIGHT 1\n";
    const Row rows[] = {
        {"bits as text", fileOf("P1\n2 1\n1 0\n"), {0, 0, 0, 255, 255, 255, 255, 255}},
        {"bits as text without blanks", fileOf("P1 2 1 10"), {0, 0, 0, 255, 255, 255, 255, 255}},
        {"grey as text", fileOf("P2\n1 2\n255\n7\n9"), {7, 7, 7, 255, 9, 9, 9, 255}},
        {"colour as text", fileOf("P3 1 1 255 1 2 3"), {1, 2, 3, 255}},
        {"bits", fileOf("P4\n1 2\n", {0x80, 0x7F}), {0, 0, 0, 255, 255, 255, 255, 255}},
        {"grey", fileOf("P5\n2 1\n255\n", {5, 6}), {5, 5, 5, 255, 6, 6, 6, 255}},
        {"colour", fileOf("P6\n1 2\n255\n", {1, 2, 3, 4, 5, 6}), {1, 2, 3, 255, 4, 5, 6, 255}},
        {"16 bits", fileOf("P5 1 1 65535\n", {1, 2}), {0x102, 0x102, 0x102, 65535}},
        {"16 bits as text", fileOf("P3 1 1 65535 1 2 3"), {1, 2, 3, 65535}},
        {"another largest value",
         fileOf("P2 4 1 3 0 1 2 3"),
         {0, 0, 0, 255, 85, 85, 85, 255, 170, 170, 170, 255, 255, 255, 255, 255}},
        {"rounded",
         fileOf("P2 3 1 2 0 1 2"),
         {0, 0, 0, 255, 128, 128, 128, 255, 255, 255, 255, 255}},
        {"rounded in 16 bits", fileOf("P3 1 1 1000 1 500 1000"), {66, 32768, 65535, 65535}},
        {"comments", fileOf("P5#one\n# two\n1 #three\n1#four\n255\n", {9}), {9, 9, 9, 255}},
        {"comments among text", fileOf("P2 2 1 255 1 # x\n2"), {1, 1, 1, 255, 2, 2, 2, 255}},
        {"a sample that looks like a blank", fileOf("P5 1 1 255\n", {' '}), {32, 32, 32, 255}},
        {"tuples of grey",
         fileOf(tuples + "DEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\n", {3}),
         {3, 3, 3, 255}},
        {"tuples of grey and mask",
         fileOf(tuples + "# x\n\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n", {3, 4}),
         {3, 3, 3, 4}},
        {"tuples of colour",
         fileOf(tuples + "DEPTH 3\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n", {1, 2, 3}),
         {1, 2, 3, 255}},
        {"tuples of colour and mask in 16 bits",
         fileOf(tuples + "TUPLTYPE RGB_ALPHA\nMAXVAL 65535\nDEPTH 4\nENDHDR\n",
                {0, 1, 0, 2, 0, 3, 0, 4}),
         {1, 2, 3, 4}},
        {"tuples of bits, 1 is white",
         fileOf(tuples + "DEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n", {1}),
         {255, 255, 255, 255}},
        {"tuples without type",
         fileOf(tuples + "DEPTH 4\nMAXVAL 255\nENDHDR\n", {1, 2, 3, 4}),
         {1, 2, 3, 4}},
        {"lines with carriage returns",
         fileOf("P7\r\nWIDTH 1\r\nHEIGHT 1\r\nDEPTH 1\r\nMAXVAL 255\r\nENDHDR\r\n", {8}),
         {8, 8, 8, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(pnmCodec, row.file), row.samples) << row.what;
}

TEST(Pnm, ASampleAboveTheLargestValueIsRefused) {
    for (const FileBytes& file :
         {fileOf("P5 1 1 10\n", {11}), fileOf("P2 1 1 10\n11\n"), fileOf("P2 1 1 10 11"),
          fileOf("P5 1 1 300\n", {1, 45}), fileOf("P6 1 1 10\n", {1, 2, 11})})
        EXPECT_EQ(failureOf(pnmCodec, file), "the file is damaged: row 1 of 1");
    EXPECT_EQ(failureOf(pnmCodec, fileOf("P5 1 1 10\n", {10})), "");
}

TEST(Pnm, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const char* const header = "the file is damaged: its header";
    const Row rows[] = {
        {fileOf("P8 1 1 255 "), "not a portable map"},
        {fileOf("P"), "the file ends early: in its header"},
        {fileOf("P5 a 1 255 x"), header},
        {fileOf("P5 1 -1 255 x"), header},
        {fileOf("P5 1 99999999999999999999 255 x"), header},
        {fileOf("P5 1 1 x x"), header},
        {fileOf("P5 0 1 255 x"), "the picture has no pixels"},
        {fileOf("P5 1 1 0 x"), "the file is damaged: its largest value is 0"},
        {fileOf("P5 1 1 65536 xxxx"), "the file is damaged: its largest value is 65536"},
        {fileOf("P6 10 480 255\n", FileBytes(345)), "the file ends early: row 12 of 480"},
        {fileOf("P6 60000 60000 255\n"), "the picture is too large: it would take over 1 GB"},
        {fileOf("P2 2 2 255 1 2 3"), "the file ends early: row 2 of 2"},
        {fileOf("P2 2 2 255 1 x 3 4"), "the file is damaged: row 1 of 2"},
        {fileOf("P1 2 2 10 12"), "the file ends early: row 2 of 2"},
        {fileOf("P1 2 2 12 10"), "the file is damaged: row 1 of 2"},
        {fileOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\n"), "the file ends early: in its header"},
        {fileOf("P7\nWIDTH 1\nHEIGHT x\n"), header},
        {fileOf("P7\nWIDTH\n"), header},
        {fileOf("P7\nWHAT 1\n"), header},
        {fileOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\nxxxxx"),
         "portable maps of type \"\" with 5 channels are not supported"},
        {fileOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 255\nTUPLTYPE CMY\nENDHDR\nxxx"),
         "portable maps of type \"CMY\" with 3 channels are not supported"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(failureOf(pnmCodec, row.file), row.failure)
            << std::string(row.file.begin(), row.file.end());
}

TEST(Pnm, GreyAndColourSurvive) {
    for (const bool colour : {false, true})
        for (const bool wide : {false, true})
            expectRoundTrip(pnmCodec, samplePicture(21, 5, colour, false, wide), "a.ppm");
}

TEST(Pnm, TheMaskSurvivesInATupleFileOnly) {
    for (const bool colour : {false, true})
        for (const bool mask : {false, true})
            for (const bool wide : {false, true})
                expectRoundTrip(pnmCodec, samplePicture(21, 5, colour, mask, wide), "a.PAM");
    Picture masked = samplePicture(3, 2, true, true, false), back;
    ASSERT_FALSE(readBytes(pnmCodec, writtenBytes(pnmCodec, masked, "pam"), back));
    EXPECT_FALSE(back.mask);
    masked.mask = false;
    for (size_t i = 3; i < masked.samples.size(); i += 4) masked.samples[i] = 255;
    expectSame(masked, back);
}

TEST(Pnm, TheWrittenHeaderIsTheUsualOne) {
    const FileBytes grey = writtenBytes(pnmCodec, samplePicture(3, 2, false, false, true), "a.pgm");
    EXPECT_EQ(FileBytes(grey.begin(), grey.begin() + 13), fileOf("P5\n3 2\n65535\n"));
    EXPECT_EQ(grey.size(), 13u + 12);
}

TEST(Pnm, AFileIsKnownByItsStart) {
    EXPECT_TRUE(pnmCodec.recognises(fileOf("P1\n")));
    EXPECT_TRUE(pnmCodec.recognises(fileOf("P7#")));
    for (const char* other : {"P8\n", "P0 ", "PF\n", "P6", "P6a", "6P "})
        EXPECT_FALSE(pnmCodec.recognises(fileOf(other))) << other;
}

TEST(Pnm, CutFilesFail) {
    for (const bool colour : {false, true}) {
        const FileBytes plain = writtenBytes(pnmCodec, samplePicture(9, 3, colour, false, true));
        expectEveryCutFails(pnmCodec, plain, plain.size());
        const FileBytes tuples =
            writtenBytes(pnmCodec, samplePicture(5, 3, colour, true, false), "a.pam");
        expectEveryCutFails(pnmCodec, tuples, tuples.size());
    }
    const FileBytes text = fileOf("P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 9");
    expectEveryCutFails(pnmCodec, text, text.size());
    const FileBytes bits = fileOf("P4 9 2\n", {1, 2, 3, 4});
    expectEveryCutFails(pnmCodec, bits, bits.size());
}

TEST(Pnm, SpoiltFilesDoNoHarm) {
    for (const char* path : {"a.ppm", "a.pam"})
        expectSpoiltBytesDoNoHarm(
            pnmCodec, writtenBytes(pnmCodec, samplePicture(9, 3, true, true, false), path), 120);
    expectSpoiltBytesDoNoHarm(pnmCodec, fileOf("P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12"), 60);
    expectSpoiltBytesDoNoHarm(pnmCodec, fileOf("P1 2 2 1 0 10"), 60);
}

}  // namespace

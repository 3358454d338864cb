// What holds for every type, and the round trips of those that are left to libraries.
#include "codec_files.h"
#include "host/image_plugins.h"

using namespace vistel;
using namespace vistel::test;

namespace {

TEST(Codecs, TheTableOfTypesTellsWhatTheyCan) {
    ASSERT_EQ(allCodecs().size(), allImageTypes().size());
    for (size_t i = 0; i < allCodecs().size(); ++i) {
        const Codec& codec = *allCodecs()[i];
        const ImageType& type = allImageTypes()[i];
        EXPECT_STREQ(codec.key, type.key);
        EXPECT_EQ(codec.read != nullptr, type.reads) << type.key;
        EXPECT_EQ(codec.write != nullptr, type.writes) << type.key;
        EXPECT_EQ(codecOfKey(type.key), &codec);
    }
    EXPECT_EQ(codecOfKey("no such key"), nullptr);
    EXPECT_EQ(codecOfKey(""), nullptr);
}

TEST(Codecs, WhatATypeWritesIsRecognisedByItAndByNoOther) {
    const Picture picture = samplePicture(9, 7, true, false, false);
    for (const Codec* writer : allCodecs()) {
        if (!writer->write || !writer->recognises) continue;
        FileBytes bytes = writtenBytes(*writer, picture);
        bytes.resize(std::min<size_t>(bytes.size(), 64));
        for (const Codec* codec : allCodecs()) {
            const bool recognised = codec->recognises && codec->recognises(bytes);
            EXPECT_EQ(recognised, codec == writer) << writer->key << " by " << codec->key;
        }
    }
}

TEST(Codecs, RecogniseNoFileFromTooFewBytes) {
    const Picture picture = samplePicture(9, 7, true, false, false);
    for (const Codec* writer : allCodecs()) {
        if (!writer->write) continue;
        const FileBytes bytes = writtenBytes(*writer, picture);
        for (size_t size = 0; size < 2; ++size)
            for (const Codec* codec : allCodecs()) {
                const bool known = codec->recognises && codec->recognises({bytes.data(), size});
                EXPECT_FALSE(known) << codec->key;
            }
    }
}

// What is left of a picture in a type that holds 8 bits only.
Picture narrowed(const Picture& picture) {
    Picture narrow;
    if (Failure failure = narrow.allocate(picture.width, picture.height, false))
        ADD_FAILURE() << *failure;
    narrow.colour = picture.colour;
    narrow.mask = picture.mask;
    std::vector<uint8_t> room;
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* row = picture.byteRow(y, room);
        std::copy(row, row + picture.rowSamples(), narrow.row(y));
    }
    return narrow;
}

void expectNear(const Picture& a, const Picture& b, int most) {
    ASSERT_EQ(a.samples.size(), b.samples.size());
    for (size_t i = 0; i < a.samples.size(); ++i)
        ASSERT_LE(std::abs(a.samples[i] - b.samples[i]), most) << "sample " << i;
}

TEST(Codecs, KeepEverySampleOfWhatTheyHold) {
    struct Row {
        const char* key;
        bool keepsWide, keepsGrey;
    };
    const Row rows[] = {{"tavo", true, true},
                        {"png", true, true},
                        {"tiff", true, true},
                        {"exr", false, true},
                        {"webp", false, false}};
    for (const Row& row : rows) {
        const Codec* codec = codecOfKey(row.key);
        ASSERT_TRUE(codec) << row.key;
        for (int shape = 0; shape < 8; ++shape) {
            SCOPED_TRACE(std::string(row.key) + " shape " + std::to_string(shape));
            const bool wide = (shape & 4) != 0;
            Picture picture = samplePicture(131, 70, shape & 1, shape & 2, wide);
            Picture back;
            const Failure failure = readBytes(*codec, writtenBytes(*codec, picture), back);
            ASSERT_FALSE(failure) << *failure;
            EXPECT_EQ(back.wide, wide && row.keepsWide);
            if (!row.keepsGrey) picture.colour = true;
            EXPECT_EQ(back.colour, picture.colour);
            EXPECT_EQ(back.mask, picture.mask);
            if (back.wide == picture.wide)
                expectSame(picture, back);
            else
                expectNear(narrowed(picture), back, row.key == std::string("exr") ? 1 : 0);
        }
    }
}

TEST(Codecs, KeepPicturesOfOnePixelAndOfOddShapes) {
    const uint32_t sizes[][2] = {{1, 1}, {1, 200}, {200, 1}, {64, 64}, {65, 65}, {3, 129}};
    for (const char* key : {"tavo", "png", "tiff", "exr", "webp"})
        for (const auto& size : sizes) {
            const Codec* codec = codecOfKey(key);
            ASSERT_TRUE(codec) << key;
            SCOPED_TRACE(std::string(key) + " " + std::to_string(size[0]) + " x " +
                         std::to_string(size[1]));
            Picture picture = samplePicture(size[0], size[1], true, true, false);
            // Sure to need its mask.
            picture.row(0)[3] = 77;
            expectRoundTrip(*codec, picture);
        }
}

TEST(Codecs, JpegKeepsThePictureNearly) {
    for (const bool colour : {true, false}) {
        Picture picture;
        ASSERT_FALSE(picture.allocate(70, 50, false));
        for (uint32_t y = 0; y < 50; ++y)
            for (uint32_t x = 0; x < 70; ++x) {
                const auto red = static_cast<uint8_t>(3 * x);
                const auto green = static_cast<uint8_t>(colour ? 5 * y : red);
                const uint8_t pixel[4] = {red, green, static_cast<uint8_t>(colour ? 40 : red), 255};
                std::copy(pixel, pixel + 4, picture.row(y) + 4 * x);
            }
        picture.colour = colour;
        Picture back;
        const Failure failure = readBytes(jpegCodec, writtenBytes(jpegCodec, picture), back);
        ASSERT_FALSE(failure) << *failure;
        EXPECT_FALSE(back.mask);
        ASSERT_NO_FATAL_FAILURE(expectNear(picture, back, 6));
    }
}

TEST(Codecs, DepthIsKeptByFramesAndByOpenExr) {
    for (const char* key : {"tavo", "exr"})
        for (const bool wide : {false, true}) {
            const Codec* codec = codecOfKey(key);
            ASSERT_TRUE(codec) << key;
            Picture picture = samplePicture(70, 67, true, false, wide);
            ASSERT_FALSE(picture.allocateZ());
            for (size_t i = 0; i < picture.z.size(); ++i)
                picture.z[i] = 1.0f / static_cast<float>(1 + i % 97) - 0.25f;
            picture.z[5] = 3.0e38f;
            Picture back;
            const Failure failure = readBytes(*codec, writtenBytes(*codec, picture), back);
            ASSERT_FALSE(failure) << *failure;
            EXPECT_EQ(back.z, picture.z) << key;
        }
}

TEST(Codecs, FilesThatAreCutAnywhereAreRefused) {
    struct Row {
        const char* key;
        size_t spare;  // bytes at the end that nobody misses
    };
    const Row rows[] = {{"tavo", 8}, {"png", 0}, {"jpeg", 2}, {"tiff", 0}, {"exr", 0}, {"webp", 0}};
    for (const Row& row : rows) {
        const Codec* codec = codecOfKey(row.key);
        ASSERT_TRUE(codec) << row.key;
        SCOPED_TRACE(row.key);
        for (const bool mask : {false, true}) {
            const FileBytes bytes = writtenBytes(*codec, samplePicture(7, 5, true, mask, false));
            expectEveryCutFails(*codec, bytes, bytes.size() - row.spare);
        }
    }
}

TEST(Codecs, SpoiltBytesDoNoHarm) {
    for (const char* key : {"tavo", "png", "jpeg", "tiff", "exr", "webp"}) {
        const Codec* codec = codecOfKey(key);
        ASSERT_TRUE(codec) << key;
        SCOPED_TRACE(key);
        const FileBytes bytes = writtenBytes(*codec, samplePicture(9, 6, true, true, false));
        expectSpoiltBytesDoNoHarm(*codec, bytes, 700);
    }
}

TEST(Codecs, ADiskThatIsFullIsTold) {
    const Picture picture = samplePicture(40, 30, true, true, false);
    for (const Codec* codec : allCodecs()) {
        if (!codec->write) continue;
        // A file that was opened for reading takes nothing.
        const std::string path = testing::TempDir() + "pixconv_read_only";
        std::fclose(platform::openFile(path, "w"));
        const platform::FilePtr file(platform::openFile(path, "r"));
        ASSERT_TRUE(file);
        const Failure failure = codec->write(picture, {path, file.get()});
        std::fflush(file.get());
        EXPECT_TRUE(failure || std::ferror(file.get())) << codec->key;
        std::remove(path.c_str());
    }
}

}  // namespace

// What is left of files that are cut: rows of the picture, and black.
#include "codec_files.h"
#include "convert.h"

using namespace vistel;
using namespace vistel::test;

namespace {

bool isBlack(const Picture& picture, uint32_t y) {
    const size_t first = y * picture.rowSamples();
    for (size_t i = 0; i < picture.rowSamples(); ++i) {
        if (i % 4 == 3 && !picture.mask) continue;
        if (picture.wide ? picture.wideSamples[first + i] : picture.samples[first + i])
            return false;
    }
    return true;
}

bool sameRow(const Picture& a, const Picture& b, uint32_t y) {
    const auto from = std::ptrdiff_t(y * a.rowSamples()),
               to = from + std::ptrdiff_t(a.rowSamples());
    if (a.wide)
        return std::equal(a.wideSamples.begin() + from, a.wideSamples.begin() + to,
                          b.wideSamples.begin() + from);
    return std::equal(a.samples.begin() + from, a.samples.begin() + to, b.samples.begin() + from);
}

// Of all cuts; the number of those that leave a part.
int partsOf(const Codec& codec, const FileBytes& bytes) {
    Picture whole;
    if (const Failure failure = readBytes(codec, bytes, whole)) ADD_FAILURE() << *failure;
    int parts = 0;
    for (size_t size = 0; size < bytes.size(); size += 1 + bytes.size() / 400) {
        Picture part;
        const FileBytes cut(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
        EXPECT_TRUE(readBytes(codec, cut, part)) << size;
        if (!part.partIsThere()) continue;
        ++parts;
        EXPECT_EQ(part.width, whole.width);
        EXPECT_EQ(part.height, whole.height);
        for (uint32_t y = 0; y < part.height; ++y)
            EXPECT_TRUE(isBlack(part, y) || sameRow(part, whole, y))
                << codec.key << " cut to " << size << ", row " << y;
    }
    return parts;
}

TEST(Parts, EveryCutLeavesRowsOfThePictureAndBlackOnes) {
    for (const Codec* codec : {&pngCodec, &jpegCodec, &exrCodec, &tgaCodec, &bmpCodec, &pnmCodec,
                               &pfmCodec, &dpxCodec, &cineonCodec, &hdrCodec, &webpCodec}) {
        SCOPED_TRACE(codec->key);
        Picture picture = samplePicture(23, 70, true, false, false);
        for (uint8_t& sample : picture.samples) sample |= 0x40;  // nothing black
        EXPECT_GT(partsOf(*codec, writtenBytes(*codec, picture)), 200);
    }
}

TEST(Parts, PlanesThatAreCutLeaveTheOthers) {
    const Picture picture = samplePicture(23, 70, true, true, true);
    const FileBytes bytes = writtenBytes(sgiCodec, picture);
    Picture part;
    const FileBytes cut(bytes.begin(), bytes.begin() + std::ptrdiff_t(bytes.size() / 2));
    ASSERT_TRUE(readBytes(sgiCodec, cut, part));
    ASSERT_TRUE(part.partIsThere());
    for (uint32_t y = 0; y < part.height; ++y)
        for (uint32_t x = 0; x < part.width; ++x) {
            EXPECT_EQ(part.wideRow(y)[x * 4], picture.wideRow(y)[x * 4]);
            EXPECT_EQ(part.wideRow(y)[x * 4 + 2], 0);
        }
}

TEST(Parts, APromiseOfManyRowsIsNotShownForAFew) {
    const FileBytes rows(65535 * 3 * 100);
    Picture part;
    ASSERT_TRUE(readBytes(pnmCodec, fileOf("P6 65535 1000 255\n", rows), part));
    EXPECT_TRUE(part.partIsThere());
    ASSERT_TRUE(readBytes(pnmCodec, fileOf("P6 655 65535 255\n", FileBytes(655 * 3 * 600)), part));
    EXPECT_FALSE(part.partIsThere());
}

TEST(Parts, APartIsAFrameStreamWithoutItsEnd) {
    const Picture picture = samplePicture(70, 66, true, true, false);
    const platform::FilePtr file(std::tmpfile());
    ASSERT_FALSE(writeFrame(picture, platform::duplicateStream(file.get()), FrameExtent::part));
    std::rewind(file.get());
    Picture back;
    const Failure failure = readFrame(file.get(), back);
    ASSERT_TRUE(failure);
    EXPECT_EQ(*failure, "the file ends early");
    EXPECT_EQ(back.width, picture.width);
    EXPECT_TRUE(std::any_of(back.samples.begin(), back.samples.end(), [](int s) { return s > 0; }));
}

}  // namespace

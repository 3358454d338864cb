// The writing side: what lies in the file, what is refused, and that the loader reads it back.

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "iff/iff_reader.h"
#include "iff/image_bytes.h"
#include "iff/image_writer.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Loading;
using test::TemporaryFile;

using test::maskFlags;

std::vector<uint32_t> sampleRow(uint32_t width, uint32_t y) {
    std::vector<uint32_t> row;
    for (uint32_t x = 0; x < width; ++x) row.push_back(test::planePixel(test::samplePixel(x, y)));
    return row;
}
std::vector<uint16_t> wideRow(uint32_t width, uint32_t y) {
    std::vector<uint16_t> row;
    for (uint32_t x = 0; x < width; ++x) {
        const test::Pixel p = test::samplePixel(x, y);
        for (unsigned value : {p.red, p.green, p.blue, p.mask})
            row.push_back(static_cast<uint16_t>(value << 8 | 0x5A));
    }
    return row;
}
std::vector<float> depthRow(uint32_t width, uint32_t y) {
    std::vector<float> row;
    for (uint32_t x = 0; x < width; ++x) row.push_back(test::sampleDepth(x, y));
    return row;
}

struct Options {
    uint32_t flags = maskFlags;
    uint32_t compression = compressRle;
    bool wide = false;
};

// Header, data, all rows of the sample picture, end; the form stays open.
void writeSample(ImageWriter& writer, uint32_t width, uint32_t height, const Options& options) {
    ASSERT_EQ(writer.setCompression(options.compression), iffOk);
    ASSERT_EQ(writer.setWideChannels(options.wide), iffOk);
    ASSERT_EQ(writer.writeHeader(width, height, options.flags), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    const bool colour = writer.header().bytesPerPixel() > 0;
    for (uint32_t y = 0; y < height; ++y) {
        const auto pixels = sampleRow(width, y);
        const auto words = wideRow(width, y);
        const auto depths = depthRow(width, y);
        const float* z = options.flags & imageZ ? depths.data() : nullptr;
        const bool twelve = (options.flags & imageTwelveBit) != 0;
        const int code = options.wide ? writer.writeWideScanline(colour ? words.data() : nullptr, z,
                                                                 twelve ? words.data() : nullptr)
                                      : writer.writeScanline(colour ? pixels.data() : nullptr, z,
                                                             twelve ? pixels.data() : nullptr);
        ASSERT_EQ(code, iffOk) << "row " << y;
    }
    ASSERT_EQ(writer.endImage(), iffOk);
    ASSERT_EQ(writer.endImage(), iffOk);  // twice does nothing
}

Bytes sampleFile(uint32_t width, uint32_t height, const Options& options) {
    TemporaryFile file;
    ImageWriter writer;
    EXPECT_EQ(writer.open(file.name()), iffOk);
    writeSample(writer, width, height, options);
    EXPECT_EQ(writer.close(), iffOk);
    return file.read();
}

// The chunks of a file in order: "TBHD", "DATE", "RGBA 0,0-63,63" ...
void listChunks(IffReader& group, std::vector<std::string>& list) {
    IffReader chunks;
    if (group.enter(chunks) != iffOk) return;
    while (chunks.next() > 0) {
        const int32_t id = chunks.chunkId();
        if (chunks.onGroup()) {
            listChunks(chunks, list);
            continue;
        }
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(id >> shift);
        uint8_t r[8];
        const bool tile = id == iffId("RGBA") || id == iffId("RGB2") || id == iffId("ZBUF");
        if (tile && chunks.readBytes(r, 8) == iffOk)
            for (int i = 0; i < 8; i += 2)
                text += (i ? "," : " ") + std::to_string(r[i] << 8 | r[i + 1]);
        list.push_back(text);
    }
    chunks.leave();
}

std::vector<std::string> chunksOf(const Bytes& bytes) {
    TemporaryFile file(bytes);
    IffReader root;
    std::vector<std::string> list;
    if (root.open(file.open()) != iffOk || root.next() < 0) return list;
    listChunks(root, list);
    return list;
}

TEST(TileSize, FollowsTheImageSize) {
    const struct {
        unsigned width, height;
        uint32_t tileWidth, tileHeight;
    } rows[] = {
        {1, 1, 64, 64},           {4096, 4096, 64, 64}, {4096, 4097, 512, 128},
        {1, 65535, 512, 128},     {4097, 1, 256, 64},   {8192, 65535, 256, 64},
        {8193, 1, 1024, 32},      {16384, 1, 1024, 32}, {16385, 1, 2048, 16},
        {65535, 65535, 2048, 16},
    };
    for (const auto& row : rows) {
        const TileSize size =
            tileSize(static_cast<uint16_t>(row.width), static_cast<uint16_t>(row.height));
        EXPECT_EQ(size.width, row.tileWidth) << row.width << "x" << row.height;
        EXPECT_EQ(size.height, row.tileHeight) << row.width << "x" << row.height;
    }
}

TEST(TileCount, RoundsUpInBothDirections) {
    EXPECT_EQ(tileCount(4096, 4096, {64, 64}), 4096u);
    EXPECT_EQ(tileCount(100, 100, {64, 64}), 4u);
    EXPECT_EQ(tileCount(64, 65, {64, 64}), 2u);
    EXPECT_EQ(tileCount(1, 1, {64, 64}), 1u);
    EXPECT_EQ(tileCount(65535, 65535, {2048, 16}), 32u * 4096);
}

TEST(ImageWriter, WhatItWritesTheLoaderReads) {
    for (uint32_t flags : {0u, 1u, 2u, 3u, 4u, 7u, 0x12u, 0x16u, 0x14u, 0x2003u})
        for (uint32_t compression : {compressNone, compressRle, compressQrl})
            for (bool wide : {false, true}) {
                SCOPED_TRACE(testing::Message() << std::hex << "flags " << flags << " compression "
                                                << compression << " wide " << wide);
                Loading load(sampleFile(131, 70, {flags, compression, wide}));
                ASSERT_EQ(load.run(), iffOk);
                ASSERT_EQ(load.frames.size(), 1u);
                const FrameStore& frame = load.frames[0];
                EXPECT_EQ(frame.header.width, 131u);
                EXPECT_EQ(frame.header.height, 70u);
                EXPECT_EQ(frame.header.flags, flags);
                EXPECT_EQ(frame.header.compression, compression);
                EXPECT_EQ(frame.header.tiles, 6);
                EXPECT_EQ(frame.tiles.size(), 6u);
                EXPECT_EQ(frame.header.pairFirst, 1);
                EXPECT_EQ(frame.header.pairSecond, 1);
                const bool colour = (flags & imageBlack) == 0 || (flags & imageMask) != 0;
                if (colour) {
                    EXPECT_EQ(test::pixelsOf(frame), test::samplePicture(frame.header));
                }
                EXPECT_EQ(frame.colour.empty(), !colour);
                EXPECT_EQ(frame.z.empty(), (flags & imageZ) == 0);
                for (uint32_t y = 0; !frame.z.empty() && y < 70; ++y)
                    ASSERT_EQ(std::vector<float>(frame.z.row(y), frame.z.row(y) + 131),
                              depthRow(131, y));
            }
}

TEST(ImageWriter, RandomPixelsComeBackWhateverTheCompression) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 60; ++round) {
        const uint32_t width = random() % 150 + 1, height = random() % 80 + 1;
        std::vector<uint32_t> pixels(size_t{width} * height);
        const unsigned run = random() % 40 + 1;
        uint32_t value = 0;
        for (uint32_t& pixel : pixels) {
            if (random() % run == 0) value = static_cast<uint32_t>(random());
            pixel = value;
        }
        TemporaryFile file;
        ImageWriter writer;
        ASSERT_EQ(writer.open(file.name()), iffOk);
        ASSERT_EQ(writer.setCompression(random() % 3), iffOk);
        ASSERT_EQ(writer.writeHeader(width, height, maskFlags), iffOk);
        ASSERT_EQ(writer.beginImageData(), iffOk);
        for (uint32_t y = 0; y < height; ++y)
            ASSERT_EQ(writer.writeScanline(&pixels[size_t{y} * width]), iffOk);
        ASSERT_EQ(writer.endImage(), iffOk);
        ASSERT_EQ(writer.close(), iffOk);
        Loading load(file.read());
        ASSERT_EQ(load.run(), iffOk) << "seed " << seed;
        ASSERT_EQ(test::pixelsOf(load.frames.at(0)), pixels) << "seed " << seed;
    }
}

TEST(ImageWriter, FlatTilesOfEverySizePassTheLoadersDensityCheck) {
    const std::vector<uint32_t> row(20000, 0x01020304);
    for (uint32_t width : {64u, 4096u, 5000u, 9000u, 20000u})
        for (uint32_t compression : {compressRle, compressQrl}) {
            TemporaryFile file;
            ImageWriter writer;
            ASSERT_EQ(writer.open(file.name()), iffOk);
            ASSERT_EQ(writer.setCompression(compression), iffOk);
            ASSERT_EQ(writer.writeHeader(width, 70, imageColour), iffOk);
            ASSERT_EQ(writer.beginImageData(), iffOk);
            for (int y = 0; y < 70; ++y) ASSERT_EQ(writer.writeScanline(row.data()), iffOk);
            ASSERT_EQ(writer.close(), iffOk);
            Loading load(file.read());
            EXPECT_EQ(load.run(), iffOk) << width << " compression " << compression;
        }
}

TEST(ImageWriter, TilesFollowEachOtherBandByBand) {
    EXPECT_EQ(
        chunksOf(sampleFile(100, 100, {maskFlags | imageZ, compressRle, false})),
        (std::vector<std::string>{"TBHD", "DATE", "RGBA 0,0,63,63", "ZBUF 0,0,63,63",
                                  "RGBA 64,0,99,63", "ZBUF 64,0,99,63", "RGBA 0,64,63,99",
                                  "ZBUF 0,64,63,99", "RGBA 64,64,99,99", "ZBUF 64,64,99,99"}));
    EXPECT_EQ(
        chunksOf(sampleFile(10, 10, {maskFlags | imageTwelveBit | imageZ, compressRle, true})),
        (std::vector<std::string>{"TBHD", "DATE", "RGBA 0,0,9,9", "RGB2 0,0,9,9", "ZBUF 0,0,9,9"}));
}

TEST(ImageWriter, TheFileIsAFormOfChunksOnFourByteBoundaries) {
    const Bytes file = sampleFile(3, 1, {0, compressRle, false});
    const Bytes start = file.cut(12);
    EXPECT_EQ(std::memcmp(start.data.data(), "FOR4", 4), 0);
    EXPECT_EQ(std::memcmp(start.data.data() + 8, "CIMG", 4), 0);
    EXPECT_EQ(std::memcmp(file.data.data() + 12, "TBHD", 4), 0);
    EXPECT_EQ(file.data[19], 24);
    const std::string all(file.data.begin(), file.data.end());
    const size_t date = all.find("DATE");
    ASSERT_NE(date, std::string::npos);
    EXPECT_EQ(date, 44u);
    EXPECT_EQ(file.data[date + 7], 24);  // "Sat Nov 21 13:31:14 2026"
    EXPECT_EQ(all.substr(date + 8, 24).find('\n'), std::string::npos);
    EXPECT_EQ(all.substr(date + 32, 4), "FOR4");
}

TEST(ImageWriter, AbsentRowsAreZeros) {
    TemporaryFile file;
    ImageWriter writer;
    ASSERT_EQ(writer.open(file.name()), iffOk);
    ASSERT_EQ(writer.writeHeader(5, 2, maskFlags | imageZ), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    ASSERT_EQ(writer.writeScanline(sampleRow(5, 0).data(), depthRow(5, 0).data()), iffOk);
    ASSERT_EQ(writer.writeScanline(nullptr), iffOk);
    ASSERT_EQ(writer.endImage(), iffOk);
    ASSERT_EQ(writer.close(), iffOk);
    Loading load(file.read());
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.at(0).colour.row(0)[1], sampleRow(5, 0)[1]);
    EXPECT_EQ(load.frames[0].colour.row(1)[1], 0u);
    EXPECT_EQ(load.frames[0].z.row(1)[4], 0.0f);
}

TEST(ImageWriter, SeveralImagesGoIntoOneFile) {
    TemporaryFile file;
    ImageWriter writer;
    ASSERT_EQ(writer.open(file.name()), iffOk);
    ASSERT_EQ(writer.writeText("NAME", "one"), iffOk);
    writeSample(writer, 70, 10, {});
    ASSERT_EQ(writer.nextImage(), iffOk);
    writeSample(writer, 20, 30, {imageColour, compressNone, false});
    ASSERT_EQ(writer.nextImage(), iffOk);
    ASSERT_EQ(writer.writeText("NAME", "three"), iffOk);
    writeSample(writer, 5, 5, {0, compressRle, true});
    ASSERT_EQ(writer.close(), iffOk);
    Loading load(file.read());
    ASSERT_EQ(load.run(), iffOk);
    ASSERT_EQ(load.frames.size(), 3u);
    for (const FrameStore& frame : load.frames)
        EXPECT_EQ(test::pixelsOf(frame), test::samplePicture(frame.header));
    EXPECT_EQ(load.frames[0].imageName, "one");
    EXPECT_EQ(load.frames[1].imageName, "");
    EXPECT_EQ(load.frames[2].imageName, "three");
}

TEST(ImageWriter, WritesToWhatCannotSeek) {
    TemporaryFile file;
    ImageWriter writer;
    ASSERT_EQ(writer.openStream(platform::openFile(file.name(), "w"), true), iffOk);
    EXPECT_EQ(writer.setCompression(compressNone), iffInvalidOnFifo);
    ASSERT_EQ(writer.writeHeader(70, 70, maskFlags), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    for (uint32_t y = 0; y < 70; ++y)
        ASSERT_EQ(writer.writeScanline(sampleRow(70, y).data()), iffOk);
    ASSERT_EQ(writer.close(), iffOk);
    Loading load(file.read());
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), test::samplePicture(load.frames[0].header));
}

TEST(ImageWriter, TakesWholeTilesInAnyOrder) {
    TemporaryFile file;
    ImageWriter writer;
    ASSERT_EQ(writer.open(file.name()), iffOk);
    ASSERT_EQ(writer.writeHeader(20, 10, maskFlags | imageZ), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    for (TileRect rect : {TileRect{10, 0, 19, 9}, TileRect{0, 0, 9, 9}}) {
        const Bytes raw = test::wholeTileData(writer.header(), rect);
        ASSERT_EQ(writer.writeTile("RGBA", rect, raw.data.data()), iffOk);
        ASSERT_EQ(writer.writeTile("ZBUF", rect, test::wholeDepthData(rect).data.data()), iffOk);
    }
    EXPECT_EQ(writer.writeScanline(nullptr), iffLineIoInPageMode);
    EXPECT_EQ(writer.writeTile("RGBA", {0, 0, 20, 9}, nullptr), iffBadTiling);
    EXPECT_EQ(writer.writeTile("RGB2", {0, 0, 1, 1}, nullptr), iffNo16BitChannel);
    EXPECT_EQ(writer.writeTile("NAME", {0, 0, 1, 1}, nullptr), iffClientError);
    ASSERT_EQ(writer.endImage(), iffOk);
    ASSERT_EQ(writer.close(), iffOk);
    Loading load(file.read());
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), test::samplePicture(load.frames[0].header));
    EXPECT_EQ(load.frames[0].z.row(9)[19], test::sampleDepth(19, 9));
}

// --- refusals ---

struct OpenWriter {
    OpenWriter() { EXPECT_EQ(writer.open(file.name()), iffOk); }
    TemporaryFile file;
    ImageWriter writer;
    const std::vector<uint32_t> row = std::vector<uint32_t>(16);
    const std::vector<uint16_t> words = std::vector<uint16_t>(64);
    const std::vector<float> z = std::vector<float>(16);
};

TEST(ImageWriterRefuses, SizesThatAreNone) {
    OpenWriter w;
    EXPECT_EQ(w.writer.writeHeader(0, 5, 0), iffBadImageHeader);
    EXPECT_EQ(w.writer.writeHeader(5, 0, 0), iffBadImageHeader);
    EXPECT_EQ(w.writer.writeHeader(65536, 5, 0), iffBadImageSize);
    EXPECT_EQ(w.writer.beginImageData(), iffBadImageHeader);  // there is no header to write
    EXPECT_EQ(w.writer.writeHeader(5, 5, 0), iffOk);
    EXPECT_EQ(w.writer.writeHeader(5, 5, 0), iffClientError);
}

TEST(ImageWriterRefuses, RowsOutOfTurn) {
    OpenWriter w;
    EXPECT_EQ(w.writer.writeScanline(w.row.data()), iffNoImageHeader);
    EXPECT_EQ(w.writer.endImage(), iffClientError);
    ASSERT_EQ(w.writer.writeHeader(16, 2, maskFlags), iffOk);
    EXPECT_EQ(w.writer.writeScanline(w.row.data()), iffClientError);  // no tile group yet
    ASSERT_EQ(w.writer.beginImageData(), iffOk);
    EXPECT_EQ(w.writer.beginImageData(), iffClientError);
    EXPECT_EQ(w.writer.writeText("NAME", "late"), iffClientError);
    EXPECT_EQ(w.writer.writeScanline(w.row.data(), w.z.data()), iffNoZPlane);
    EXPECT_EQ(w.writer.writeScanline(w.row.data(), nullptr, w.row.data()), iffNo16BitChannel);
    EXPECT_EQ(w.writer.writeWideScanline(w.words.data()), iffClientError);
    ASSERT_EQ(w.writer.writeScanline(w.row.data()), iffOk);
    EXPECT_EQ(w.writer.writeTile("RGBA", {0, 0, 0, 0}, nullptr), iffPageIoInScanlineMode);
    ASSERT_EQ(w.writer.writeScanline(w.row.data()), iffOk);
    EXPECT_EQ(w.writer.writeScanline(w.row.data()), iffIoAfterImageEnd);
    ASSERT_EQ(w.writer.endImage(), iffOk);
    EXPECT_EQ(w.writer.writeScanline(w.row.data()), iffIoAfterImageEnd);
    EXPECT_EQ(w.writer.beginImageData(), iffIoAfterImageEnd);
}

TEST(ImageWriterRefuses, ColourOnABlackImage) {
    OpenWriter w;
    ASSERT_EQ(w.writer.writeHeader(16, 2, imageBlack | imageZ), iffOk);
    ASSERT_EQ(w.writer.beginImageData(), iffOk);
    EXPECT_EQ(w.writer.writeScanline(w.row.data(), w.z.data()), iffColourIoOnBlack);
    EXPECT_EQ(w.writer.writeScanline(nullptr, w.z.data()), iffOk);
}

TEST(ImageWriterRefuses, OtherCompressions) {
    OpenWriter w;
    EXPECT_EQ(w.writer.setCompression(3), iffClientError);
    EXPECT_EQ(w.writer.setCompression(2), iffOk);
    ASSERT_EQ(w.writer.writeHeader(16, 2, maskFlags), iffOk);
    EXPECT_EQ(w.writer.setCompression(1), iffClientError);
    EXPECT_EQ(w.writer.header().compression, 2u);
}

TEST(ImageWriterRefuses, AnImageThatLacksRows) {
    OpenWriter w;
    ASSERT_EQ(w.writer.writeHeader(16, 70, maskFlags), iffOk);
    ASSERT_EQ(w.writer.beginImageData(), iffOk);
    for (uint32_t y = 0; y < 66; ++y)
        ASSERT_EQ(w.writer.writeScanline(sampleRow(16, y).data()), iffOk);
    EXPECT_EQ(w.writer.endImage(), iffPartialImageIo);
    EXPECT_EQ(w.writer.endImage(), iffOk);
    EXPECT_EQ(w.writer.close(), iffOk);
    // The group is closed all the same: the rows that were given can be read.
    Loading load(w.file.read());
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.at(0).colour.row(65)[3], sampleRow(16, 65)[3]);
    EXPECT_EQ(load.frames[0].colour.row(66)[3], 0u);
}

TEST(ImageWriterRefuses, EverythingWhenNothingIsOpen) {
    ImageWriter writer;
    EXPECT_FALSE(writer.isOpen());
    EXPECT_EQ(writer.writeText("NAME", "x"), iffClientError);
    EXPECT_EQ(writer.writeHeader(5, 5, 0), iffClientError);
    EXPECT_EQ(writer.beginImageData(), iffClientError);
    EXPECT_EQ(writer.nextImage(), iffClientError);
    EXPECT_EQ(writer.close(), iffOk);
    EXPECT_EQ(writer.open("/no/such/folder/for/vistel.iff"), iffIoError);
    EXPECT_FALSE(writer.isOpen());
}

TEST(ImageWriter, ATileCountThatIsGivenIsWritten) {
    OpenWriter w;
    ASSERT_EQ(w.writer.writeHeader(16, 16, 0, 77), iffOk);
    EXPECT_EQ(w.writer.header().tiles, 77);
}

TEST(ImageWriter, RowsAfterAFailureAreRefusedWithIt) {
    TemporaryFile file;
    FILE* const stream = platform::openFile(file.name(), "w");
    ImageWriter writer;
    ASSERT_EQ(writer.openStream(stream), iffOk);
    ASSERT_EQ(writer.writeHeader(16, 200, maskFlags), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    ASSERT_NE(std::freopen(file.name().c_str(), "rb", stream), nullptr);  // refuses every byte
    for (uint32_t y = 0; y < 63; ++y)
        ASSERT_EQ(writer.writeScanline(sampleRow(16, y).data()), iffOk);
    for (uint32_t y = 63; y < 200; ++y)
        ASSERT_EQ(writer.writeScanline(sampleRow(16, y).data()), iffIoError) << y;
    EXPECT_EQ(writer.close(), iffIoError);
}

TEST(ImageWriter, EveryFileStartsWithTheDefaults) {
    OpenWriter w;
    ASSERT_EQ(w.writer.setCompression(compressQrl), iffOk);
    ASSERT_EQ(w.writer.setWideChannels(true), iffOk);
    ASSERT_EQ(w.writer.close(), iffOk);
    ASSERT_EQ(w.writer.open(w.file.name()), iffOk);
    ASSERT_EQ(w.writer.writeHeader(16, 2, maskFlags), iffOk);
    EXPECT_EQ(w.writer.header().compression, uint32_t{compressRle});
    EXPECT_EQ(w.writer.header().wideChannels, 0);
}

}  // namespace
}  // namespace vistel

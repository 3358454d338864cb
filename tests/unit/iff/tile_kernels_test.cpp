// The fast kernels against the scalar reference.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "iff/tile_kernels.h"

namespace vistel {
namespace {

constexpr uint8_t guard = 0xA7;

std::vector<const TileKernels*> fastKernels() {
    std::vector<const TileKernels*> kernels;
    for (const TileKernels* fast : {sse2TileKernels(), avx2TileKernels()})
        if (fast) kernels.push_back(fast);
    return kernels;
}

class KernelTest : public testing::Test {
 protected:
    KernelTest() : seed(std::random_device{}()), random(seed) {}
    std::vector<uint8_t> noise(size_t count) {
        std::vector<uint8_t> bytes(count);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
        return bytes;
    }
    unsigned seed;
    std::mt19937 random;
};

// A canvas of guard pixels around an area.
struct GuardedCanvas {
    GuardedCanvas(size_t columns, size_t rows, size_t start, bool streaming)
        : pixels(start + rows * (columns + 3) + 16, 0xA7A7A7A7),
          area{pixels.data() + start, columns + 3, columns, rows, streaming} {}
    std::vector<uint32_t> pixels;
    PixelArea area;
};

// Runs a pixel kernel at many widths, at every place in a cache line and past the cache or not, and
// compares the pixels and those around them with the reference's.
template <class Run>
void comparePixels(size_t columns, size_t rows, const TileKernels& fast, Run run) {
    for (const bool streaming : {false, true})
        for (size_t start = 0; start < 17; ++start) {
            GuardedCanvas expected(columns, rows, start, false), got(columns, rows, start, streaming);
            run(scalarTileKernels(), expected.area);
            run(fast, got.area);
            ASSERT_EQ(expected.pixels, got.pixels)
                << fast.name << " columns " << columns << " start " << start
                << (streaming ? " streaming" : "");
        }
}

// Narrow areas, and those whose widths are about a multiple of a block.
std::vector<size_t> widths() {
    std::vector<size_t> list;
    for (size_t columns = 0; columns < 40; ++columns) list.push_back(columns);
    for (size_t columns : {47, 48, 49, 63, 64, 65, 79, 80, 95, 96, 97, 127, 128, 131})
        list.push_back(columns);
    return list;
}

TEST_F(KernelTest, InterleavingGivesTheSamePixelsAtEveryWidthAndAlignment) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    for (const TileKernels* fast : fastKernels())
        for (const size_t columns : widths()) {
            constexpr size_t rows = 3;
            // Own blocks of the exact size: a read behind them is seen by the sanitizers. The last
            // plane's row stands for every row.
            const std::vector<uint8_t> planes[4] = {noise(columns * rows), noise(columns * rows),
                                                    noise(columns * rows), noise(columns)};
            const uint8_t* const bytes[4] = {planes[0].data(), planes[1].data(), planes[2].data(),
                                             planes[3].data()};
            const size_t rowBytes[4] = {columns, columns, columns, 0};
            comparePixels(columns, rows, *fast, [&](const TileKernels& kernels, PixelArea area) {
                kernels.interleave(area, bytes, rowBytes);
            });
        }
}

TEST_F(KernelTest, ReversedPixelsAreTheSameAtEveryWidthAndAlignment) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    for (const TileKernels* fast : fastKernels())
        for (const size_t columns : widths()) {
            constexpr size_t rows = 2;
            const std::vector<uint8_t> four = noise(4 * columns * rows);
            const std::vector<uint8_t> three = noise(3 * columns * rows);
            comparePixels(columns, rows, *fast, [&](const TileKernels& kernels, PixelArea area) {
                kernels.reverse4(area, four.data());
            });
            comparePixels(columns, rows, *fast, [&](const TileKernels& kernels, PixelArea area) {
                kernels.reverse3(area, three.data());
            });
        }
}

TEST_F(KernelTest, SeparatedBytesAreTheSameAtEveryWidth) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    for (const TileKernels* fast : fastKernels())
        for (const size_t columns : widths()) {
            const std::vector<uint8_t> pixels = noise(4 * columns);
            const auto separated = [&](const TileKernels& kernels) {
                std::vector<std::vector<uint8_t>> planes(4, std::vector<uint8_t>(columns));
                uint8_t* const bytes[4] = {planes[0].data(), planes[1].data(), planes[2].data(),
                                           planes[3].data()};
                kernels.separate(pixels.data(), columns, bytes);
                return planes;
            };
            EXPECT_EQ(separated(*fast), separated(scalarTileKernels())) << columns;
        }
}

TEST(TileKernels, TheReferenceSeparatesTheFirstByteIntoTheFirstPlane) {
    const uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 7, 8};
    uint8_t planes[4][2] = {};
    uint8_t* const bytes[4] = {planes[0], planes[1], planes[2], planes[3]};
    scalarTileKernels().separate(pixels, 2, bytes);
    for (int place = 0; place < 4; ++place) {
        EXPECT_EQ(planes[place][0], 1 + place);
        EXPECT_EQ(planes[place][1], 5 + place);
    }
}

TEST(TileKernels, TheReferenceInterleavesTheFirstPlaneIntoTheLowestByte) {
    const uint8_t a[] = {1, 5}, b[] = {2, 6}, c[] = {3, 7}, d[] = {4, 8};
    const uint8_t* const bytes[4] = {a, b, c, d};
    const size_t rowBytes[4] = {2, 2, 2, 2};
    uint32_t pixels[2] = {};
    scalarTileKernels().interleave({pixels, 2, 2, 1}, bytes, rowBytes);
    EXPECT_EQ(pixels[0], 0x04030201u);
    EXPECT_EQ(pixels[1], 0x08070605u);
}

TEST(TileKernels, TheReferenceTakesEachRowFromTheNextBytesOfEachPlane) {
    const uint8_t moving[] = {1, 2, 3, 4}, fixed[] = {9};
    const uint8_t* const bytes[4] = {moving, fixed, fixed, fixed};
    const size_t rowBytes[4] = {2, 0, 0, 0};
    uint32_t pixels[4] = {};
    scalarTileKernels().interleave({pixels, 3, 1, 2}, bytes, rowBytes);
    EXPECT_EQ(pixels[0], 0x09090901u);
    EXPECT_EQ(pixels[1], 0u);
    EXPECT_EQ(pixels[3], 0x09090903u);
}

TEST(TileKernels, TheReferenceReversesMaskBlueGreenRedIntoRedGreenBlueMask) {
    const uint8_t source[] = {40, 30, 20, 10};
    uint32_t pixel = 0;
    scalarTileKernels().reverse4({&pixel, 1, 1, 1}, source);
    EXPECT_EQ(pixel, 10u | 20u << 8 | 30u << 16 | 40u << 24);
    scalarTileKernels().reverse3({&pixel, 1, 1, 1}, source + 1);
    EXPECT_EQ(pixel, 10u | 20u << 8 | 30u << 16 | 255u << 24);
}

struct Unpacked {
    size_t stored, consumed;
    std::vector<uint8_t> values;
    bool operator==(const Unpacked& other) const {
        return stored == other.stored && consumed == other.consumed && values == other.values;
    }
};

Unpacked unpackRle(const TileKernels& kernels, const std::vector<uint8_t>& data, size_t count,
                   size_t enough) {
    std::vector<uint8_t> values(count + kernelSlack + 16, guard);
    const uint8_t* at = data.data();
    const size_t stored =
        kernels.unpackRle(at, data.data() + data.size(), values.data(), count, enough);
    EXPECT_TRUE(std::all_of(values.end() - 16, values.end(), [](uint8_t v) { return v == guard; }));
    values.resize(stored);
    return {stored, static_cast<size_t>(at - data.data()), values};
}

Unpacked unpackRle(const TileKernels& kernels, const std::vector<uint8_t>& data, size_t count) {
    return unpackRle(kernels, data, count, count);
}

Unpacked unpackQrl(const TileKernels& kernels, const std::vector<uint8_t>& data, size_t count) {
    std::vector<uint8_t> planes[3];
    for (auto& plane : planes) plane.assign(count + kernelSlack + 16, guard);
    uint8_t* const out[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    const uint8_t* at = data.data();
    const size_t stored = kernels.unpackQrl(at, data.data() + data.size(), out, count);
    Unpacked result{stored, static_cast<size_t>(at - data.data()), {}};
    for (auto& plane : planes) {
        EXPECT_TRUE(
            std::all_of(plane.end() - 16, plane.end(), [](uint8_t v) { return v == guard; }));
        result.values.insert(result.values.end(), plane.begin(),
                             plane.begin() + static_cast<std::ptrdiff_t>(stored));
    }
    return result;
}

std::vector<uint8_t> bytes(std::initializer_list<int> list) {
    return std::vector<uint8_t>(list.begin(), list.end());
}

TEST(TileKernels, RunLengthPacketsAsTheReferenceReadsThem) {
    std::vector<uint8_t> copy128 = {0x7F};
    for (int i = 0; i < 128; ++i) copy128.push_back(static_cast<uint8_t>(i));
    const std::vector<uint8_t> counted(copy128.begin() + 1, copy128.end());
    const struct {
        const char* what;
        std::vector<uint8_t> data;
        size_t count;
        size_t stored;
        std::vector<uint8_t> values;
    } rows[] = {
        {"0x80 repeats the next byte once", bytes({0x80, 9}), 1, 1, bytes({9})},
        {"0x00 copies one literal", bytes({0x00, 9}), 1, 1, bytes({9})},
        {"0xFF repeats 128 times", bytes({0xFF, 3}), 128, 128, std::vector<uint8_t>(128, 3)},
        {"0x7F copies 128", copy128, 128, 128, counted},
        {"packets follow each other", bytes({1, 5, 6, 0x82, 7}), 5, 5, bytes({5, 6, 7, 7, 7})},
        {"a run past the count stores nothing", bytes({0, 5, 0x82, 7}), 3, 1, bytes({5})},
        {"a literal past the count stores nothing", bytes({0, 5, 2, 7, 7, 7}), 3, 1, bytes({5})},
        {"a literal cut short keeps what is there", bytes({3, 1, 2}), 4, 2, bytes({1, 2})},
        {"a run without value stores nothing", bytes({0x81}), 2, 0, {}},
        {"no data", {}, 2, 0, {}},
        {"nothing wanted", bytes({0x80, 9}), 0, 0, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Unpacked got = unpackRle(scalarTileKernels(), row.data, row.count);
        EXPECT_EQ(got.stored, row.stored);
        EXPECT_EQ(got.values, row.values);
        for (const TileKernels* fast : fastKernels())
            EXPECT_EQ(got, unpackRle(*fast, row.data, row.count)) << fast->name;
    }
}

TEST_F(KernelTest, RunLengthPacketsOfAnyShapeUnpackTheSame) {
    for (const TileKernels* fast : fastKernels())
        for (int round = 0; round < 3000; ++round) {
            std::vector<uint8_t> data = noise(random() % 900);
            if (round & 1)  // short packets only
                for (size_t i = 0; i < data.size(); i += 3) data[i] &= 0x87;
            const size_t count = random() % 5000;
            ASSERT_EQ(unpackRle(scalarTileKernels(), data, count), unpackRle(*fast, data, count))
                << fast->name << " seed " << seed << " round " << round;
        }
}

// Packets as an encoder makes them, `count` values in all.
std::vector<uint8_t> goodPackets(std::mt19937& random, size_t count, size_t longest) {
    std::vector<uint8_t> data;
    while (count > 0) {
        const size_t length = std::min(count, 1 + random() % longest);
        const bool repeat = random() % 2 == 0;
        data.push_back(static_cast<uint8_t>(length - 1 + (repeat ? 128 : 0)));
        for (size_t i = 0; i < (repeat ? 1 : length); ++i)
            data.push_back(static_cast<uint8_t>(random()));
        count -= length;
    }
    return data;
}

TEST_F(KernelTest, WholeChannelsUnpackTheSameWhateverLengthTheirPacketsHave) {
    for (const TileKernels* fast : fastKernels())
        for (size_t longest : {1, 2, 3, 8, 33, 65, 128})
            for (int round = 0; round < 20; ++round) {
                const size_t count = 1 + random() % 4200;
                std::vector<uint8_t> data = goodPackets(random, count, longest);
                // Of channels that follow, or none.
                const size_t size = data.size();
                data.resize(size + (round % 2) * (random() % 300), 0x7F);
                const Unpacked expected = unpackRle(scalarTileKernels(), data, count);
                ASSERT_EQ(expected.stored, count);
                ASSERT_EQ(expected.consumed, size);
                ASSERT_EQ(expected, unpackRle(*fast, data, count))
                    << fast->name << " seed " << seed << " longest " << longest;
            }
}

TEST_F(KernelTest, DataThatEndsAnywhereUnpacksTheSame) {
    constexpr size_t count = 700;
    const std::vector<uint8_t> whole = goodPackets(random, count, 128);
    for (const TileKernels* fast : fastKernels())
        for (size_t size = 0; size <= whole.size(); ++size) {
            const std::vector<uint8_t> data(whole.begin(),
                                            whole.begin() + static_cast<std::ptrdiff_t>(size));
            for (size_t wanted : {count, count - 1, count + 1, count / 2})
                ASSERT_EQ(unpackRle(scalarTileKernels(), data, wanted),
                          unpackRle(*fast, data, wanted))
                    << fast->name << " seed " << seed << " size " << size << " wanted " << wanted;
        }
}

TEST(TileKernels, UnpackingStopsBehindThePacketThatMakesItEnough) {
    const std::vector<uint8_t> data = bytes({0x82, 7, 1, 5, 6, 0x80, 9});  // 3, 2 and 1 values
    const struct {
        size_t enough, stored, consumed;
    } rows[] = {{0, 0, 0}, {1, 3, 2}, {3, 3, 2}, {4, 5, 5}, {5, 5, 5}, {6, 6, 7}};
    for (const auto& row : rows) {
        const Unpacked got = unpackRle(scalarTileKernels(), data, 6, row.enough);
        EXPECT_EQ(got.stored, row.stored) << row.enough;
        EXPECT_EQ(got.consumed, row.consumed) << row.enough;
    }
}

TEST_F(KernelTest, UnpackingInStepsStopsWhereTheReferenceDoes) {
    for (const TileKernels* fast : fastKernels())
        for (int round = 0; round < 500; ++round) {
            const size_t count = 1 + random() % 3000;
            const std::vector<uint8_t> data = goodPackets(random, count, 1 + random() % 128);
            const size_t enough = random() % (count + 1);
            ASSERT_EQ(unpackRle(scalarTileKernels(), data, count, enough),
                      unpackRle(*fast, data, count, enough))
                << fast->name << " seed " << seed << " enough " << enough << " of " << count;
        }
}

TEST_F(KernelTest, ThreeByteRunsUnpackTheSame) {
    for (const TileKernels* fast : fastKernels())
        for (int round = 0; round < 2000; ++round) {
            const std::vector<uint8_t> data = noise(random() % 2000);
            const size_t count = random() % 2000;
            ASSERT_EQ(unpackQrl(scalarTileKernels(), data, count), unpackQrl(*fast, data, count))
                << fast->name << " seed " << seed << " round " << round;
        }
}

TEST_F(KernelTest, SkippingStopsWhereUnpackingDoes) {
    for (int round = 0; round < 3000; ++round) {
        std::vector<uint8_t> data = noise(random() % 300);
        const size_t count = random() % 1500;
        const Unpacked unpacked = unpackRle(scalarTileKernels(), data, count);
        const uint8_t* at = data.data();
        const bool whole = skipRle(at, data.data() + data.size(), count);
        ASSERT_EQ(whole, unpacked.stored == count) << "seed " << seed;
        if (whole) {
            ASSERT_EQ(static_cast<size_t>(at - data.data()), unpacked.consumed) << "seed " << seed;
        }
    }
}

TEST(TileKernels, NearestSamplesAreEveryStepth) {
    const uint8_t a[] = {0, 1, 2, 3, 4, 5, 6};
    const uint8_t* const bytes[4] = {a, a, a, a};
    uint32_t pixels[3] = {};
    interleaveNearest(pixels, bytes, 3, 3);
    EXPECT_EQ(pixels[0], 0u);
    EXPECT_EQ(pixels[1], 0x03030303u);
    EXPECT_EQ(pixels[2], 0x06060606u);
}

TEST(TileKernels, GatheringTakesOffsetsOrFixedValues) {
    const uint8_t source[] = {1, 2, 3, 4, 5, 6};
    PixelRecipe recipe;
    recipe.offset[0] = 1;
    recipe.offset[1] = 0;
    recipe.fixed[2] = 77;
    recipe.fixed[3] = 255;
    uint32_t pixels[2] = {};
    gatherPixels(pixels, source, 2, 3, recipe);
    EXPECT_EQ(pixels[0], 2u | 1u << 8 | 77u << 16 | 255u << 24);
    EXPECT_EQ(pixels[1], 5u | 4u << 8 | 77u << 16 | 255u << 24);
}

}  // namespace
}  // namespace vistel

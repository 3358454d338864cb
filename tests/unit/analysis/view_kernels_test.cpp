// The fast kernels against the scalar reference.

#include "analysis/view_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

namespace vistel {
namespace {

constexpr size_t widest = 150;  // several blocks of every kernel and a rest of every size

std::vector<const ViewKernels*> fastKernels() {
    std::vector<const ViewKernels*> kernels;
    for (auto* find : {sse2ViewKernels, avx2ViewKernels, vbmiViewKernels})
        if (const ViewKernels* fast = find()) kernels.push_back(fast);
    return kernels;
}

class ViewKernelTest : public testing::Test {
 protected:
    ViewKernelTest() : seed(std::random_device{}()), random(seed) {}

    // Extremes in one case of four, noise in the others.
    template <class Value>
    std::vector<Value> values(size_t count) {
        std::vector<Value> made(count);
        const unsigned kind = random() % 8;
        for (Value& value : made)
            value = kind == 0 ? Value(0) : kind == 1 ? Value(-1) : static_cast<Value>(random());
        return made;
    }

    // Runs a kernel and the reference on every width and several starts into guarded blocks.
    template <class Value, class Run>
    void compare(Run run) {
        for (const ViewKernels* fast : fastKernels())
            for (size_t width = 0; width < widest; ++width)
                for (const size_t start : {0, 1, 3, 8}) {
                    const auto held = values<Value>(width + 32);
                    auto expected = held, got = held;
                    prepare(width, (start * 5 + width) % 4);
                    run(scalarViewKernels(), width, expected.data() + start);
                    run(*fast, width, got.data() + start);
                    ASSERT_EQ(expected, got) << fast->name << " width " << width << " start "
                                             << start << " seed " << seed;
                    // The values around the asked ones, which the reference must leave too.
                    ASSERT_TRUE(std::equal(held.begin(), held.begin() + start, got.begin()));
                    ASSERT_TRUE(std::equal(held.begin() + start + width, held.end(),
                                           got.begin() + start + width));
                }
    }

    // Sources that begin `start` values into their blocks and end with them, where the sanitizers
    // see what is read behind.
    void prepare(size_t width, size_t start) {
        pixelBlock = values<uint32_t>(width + start);
        beforeBlock = values<uint32_t>(width + start);
        byteBlock = values<uint8_t>(width + start);
        pixels = pixelBlock.data() + start;
        before = beforeBlock.data() + start;
        bytes = byteBlock.data() + start;
        for (auto& table : tables.plane)
            for (uint8_t& entry : table) entry = static_cast<uint8_t>(random());
    }

    unsigned seed;
    std::mt19937 random;
    std::vector<uint32_t> pixelBlock, beforeBlock;
    std::vector<uint8_t> byteBlock;
    const uint32_t *pixels = nullptr, *before = nullptr;
    const uint8_t* bytes = nullptr;
    ByteTables tables;
};

TEST_F(ViewKernelTest, LookUpIsTheSameForEverySetOfPlanes) {
    for (unsigned planes = 0; planes < 16; ++planes) {
        SCOPED_TRACE(planes);
        compare<uint32_t>([&](const ViewKernels& kernels, size_t width, uint32_t* out) {
            kernels.lookUp(tables, planes, pixels, width, out);
        });
    }
}

TEST_F(ViewKernelTest, GreyPlanesAreTheSame) {
    for (int plane = 0; plane < 4; ++plane)
        for (const uint8_t flip : {0x00, 0xFF})
            compare<uint32_t>([&](const ViewKernels& kernels, size_t width, uint32_t* out) {
                kernels.greyPlane(plane, flip, pixels, width, out);
            });
}

TEST_F(ViewKernelTest, LuminanceIsTheSame) {
    compare<uint32_t>([&](const ViewKernels& kernels, size_t width, uint32_t* out) {
        kernels.luminance(pixels, width, out);
    });
}

TEST_F(ViewKernelTest, GreyBytesAreTheSame) {
    compare<uint32_t>([&](const ViewKernels& kernels, size_t width, uint32_t* out) {
        kernels.greyBytes(bytes, width, out);
    });
}

TEST_F(ViewKernelTest, ShadesAreTheSameWithAndWithoutARowBefore) {
    for (const float k : {0.025f, -0.025f, 0.0f, 1e-6f, 7.5f, 1e30f, INFINITY, NAN})
        for (const bool first : {true, false}) {
            SCOPED_TRACE(k);
            compare<uint8_t>([&](const ViewKernels& kernels, size_t width, uint8_t* out) {
                kernels.shadeRow(k, pixels, first ? nullptr : before, width, out);
            });
        }
}

TEST_F(ViewKernelTest, ShadesAreTheSameForEveryDifference) {
    // Each row pair holds all heights here against one height before it and one below it.
    for (const ViewKernels* fast : fastKernels())
        for (uint32_t other = 0; other < 256; ++other) {
            std::vector<uint32_t> row, under(512, other << 16);
            for (uint32_t here = 0; here < 256; ++here) {
                row.push_back((here * 37 + other) << 16);
                row.push_back(here << 16);
            }
            std::vector<uint8_t> expected(512), got(512);
            scalarViewKernels().shadeRow(0.025f, row.data(), under.data(), 512, expected.data());
            fast->shadeRow(0.025f, row.data(), under.data(), 512, got.data());
            ASSERT_EQ(expected, got) << fast->name;
        }
}

TEST_F(ViewKernelTest, BlendedColoursAreTheSame) {
    for (const ReliefBlend blend : {ReliefBlend{655, 0}, ReliefBlend{652, 256},
                                    ReliefBlend{327, 32768}, ReliefBlend{2, 65280}})
        compare<uint32_t>([&](const ViewKernels& kernels, size_t width, uint32_t* out) {
            kernels.blendRelief(blend, bytes, pixels, width, out);
        });
}

TEST_F(ViewKernelTest, AResultMayReplaceItsSource) {
    auto sets = fastKernels();
    sets.push_back(&scalarViewKernels());
    for (const ViewKernels* kernels : sets)
        for (const size_t width : {5, 67, 150}) {
            prepare(width, 0);
            using Run = std::function<void(const uint32_t*, uint32_t*)>;
            const Run runs[] = {
                [&](auto from, auto to) { kernels->lookUp(tables, 15, from, width, to); },
                [&](auto from, auto to) { kernels->lookUp(tables, 14, from, width, to); },
                [&](auto from, auto to) { kernels->greyPlane(1, 0, from, width, to); },
                [&](auto from, auto to) { kernels->luminance(from, width, to); },
                [&](auto from, auto to) {
                    kernels->blendRelief({655, 0}, bytes, from, width, to);
                },
            };
            for (const Run& run : runs) {
                auto apart = pixelBlock, same = pixelBlock;
                run(pixels, apart.data());
                run(same.data(), same.data());
                EXPECT_EQ(apart, same) << kernels->name << " seed " << seed;
            }
        }
}

TEST(ViewKernels, TheReferenceLooksUpEveryByteOfEveryPlane) {
    ByteTables tables;
    for (int plane = 0; plane < 4; ++plane)
        for (int i = 0; i < 256; ++i)
            tables.plane[plane][i] = static_cast<uint8_t>(i * 3 + 64 * plane);
    for (uint32_t i = 0; i < 256; ++i) {
        const uint32_t pixel =
            i << 24 | ((i + 1) & 255) << 16 | ((i + 2) & 255) << 8 | ((i + 3) & 255);
        uint32_t out = 0;
        scalarViewKernels().lookUp(tables, 15, &pixel, 1, &out);
        EXPECT_EQ(out >> 24, (i * 3) & 255);
        EXPECT_EQ(out >> 16 & 255, ((i + 1) * 3 + 64) & 255);
        EXPECT_EQ(out >> 8 & 255, ((i + 2) * 3 + 128) & 255);
        EXPECT_EQ(out & 255, ((i + 3) * 3 + 192) & 255);
    }
}

TEST_F(ViewKernelTest, TheReferenceGivesTheSameForAPictureAsForItsParts) {
    // A picture is looked up by tables of pairs, its parts are too small for them.
    constexpr size_t size = (size_t{1} << 18) + 3, part = 1000;
    prepare(size, 0);
    const auto held = values<uint32_t>(size);
    for (unsigned planes = 0; planes < 16; ++planes) {
        auto whole = held, parts = held;
        scalarViewKernels().lookUp(tables, planes, pixels, size, whole.data());
        for (size_t i = 0; i < size; i += part)
            scalarViewKernels().lookUp(tables, planes, pixels + i, std::min(part, size - i),
                                       parts.data() + i);
        ASSERT_TRUE(whole == parts) << "planes " << planes << " seed " << seed;
    }
}

}  // namespace
}  // namespace vistel

#include "analysis/byte_histogram.h"

#include <gtest/gtest.h>

#include <limits>

#include "iff/iff_bytes.h"
#include "iff/result_codes.h"

namespace vistel {
namespace {

using test::Bytes;

// Counts the first chunk of a group that holds these bytes.
int countFirst(const Bytes& chunks, ByteHistogram& histogram) {
    test::TemporaryFile file(Bytes().group("FOR4", "TBMP", chunks));
    IffReader root, group;
    EXPECT_EQ(root.open(file.open()), iffOk);
    EXPECT_GT(root.next(), 0);
    EXPECT_EQ(root.enter(group), iffOk);
    EXPECT_GT(group.next(), 0);
    return countTileBytes(group, histogram);
}

ByteHistogram counted(const Bytes& body) {
    ByteHistogram histogram;
    EXPECT_EQ(countFirst(Bytes().chunk("RGBA", body), histogram), iffOk);
    return histogram;
}

// The rule as it is told: all but the last 8 bytes are read into a block of zeros as large as the
// chunk, and what stands from its ninth byte on is counted.
ByteHistogram byTheRule(std::vector<uint8_t> body) {
    ByteHistogram histogram;
    if (body.size() <= 8) return histogram;
    std::fill(body.end() - 8, body.end(), uint8_t{0});
    for (size_t i = 8; i < body.size(); ++i) ++histogram.counts[body[i]];
    histogram.total = static_cast<uint32_t>(body.size() - 8);
    return histogram;
}

TEST(ByteHistogramTest, CountsAllBytesButTheFirstAndTheLastEight) {
    std::mt19937 random(7);
    for (const size_t size :
         {0, 1, 7, 8, 9, 12, 15, 16, 17, 24, 1000, 16383, 16384, 16392, 16400, 40000}) {
        Bytes body;
        for (size_t i = 0; i < size; ++i) body.u8(static_cast<uint8_t>(random() % 255 + 1));
        const ByteHistogram histogram = counted(body), wanted = byTheRule(body.data);
        EXPECT_EQ(histogram.counts, wanted.counts) << size;
        EXPECT_EQ(histogram.total, wanted.total) << size;
    }
}

TEST(ByteHistogramTest, ChunksAddUp) {
    ByteHistogram histogram;
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(countFirst(Bytes().chunk("RGBA", Bytes().fill(100, 5)), histogram), iffOk);
    EXPECT_EQ(histogram.counts[5], 3u * 84);
    EXPECT_EQ(histogram.counts[0], 3u * 8);
    EXPECT_EQ(histogram.total, 3u * 92);
}

TEST(ByteHistogramTest, AChunkThatIsCutIsInTheTotalAlone) {
    const Bytes body = Bytes().fill(100, 5);
    test::TemporaryFile file(
        Bytes().group("FOR4", "TBMP", Bytes().chunk("RGBA", body)).cut(20 + 80));
    IffReader root, group;
    ASSERT_EQ(root.open(file.open()), iffOk);
    ASSERT_GT(root.next(), 0);
    ASSERT_EQ(root.enter(group), iffOk);
    ASSERT_GT(group.next(), 0);
    ByteHistogram histogram;
    EXPECT_EQ(countTileBytes(group, histogram), iffPartialIo);
    EXPECT_EQ(histogram.counts, ByteHistogram{}.counts);
    EXPECT_EQ(histogram.total, 92u);
}

TEST(ByteHistogramTest, AChunkOfUnknownSizeCountsNothing) {
    ByteHistogram histogram;
    EXPECT_EQ(countFirst(Bytes().streamedChunk("RGBA", Bytes().fill(100, 5)), histogram), iffOk);
    EXPECT_EQ(histogram.total, 0u);
}

TEST(ByteHistogramTest, FullCountersStayFull) {
    constexpr uint32_t full = std::numeric_limits<uint32_t>::max();
    ByteHistogram histogram;
    histogram.counts[5] = histogram.total = full - 3;
    ASSERT_EQ(countFirst(Bytes().chunk("RGBA", Bytes().fill(100, 5)), histogram), iffOk);
    EXPECT_EQ(histogram.counts[5], full);
    EXPECT_EQ(histogram.total, full);
    EXPECT_EQ(histogram.counts[0], 8u);
}

// --- the picture
// ----------------------------------------------------------------------------------

TEST(HistogramPictureTest, BarsAreScaledToTheLargestAndTheLineToTheTotal) {
    ByteHistogram histogram;
    histogram.counts[0] = 200;
    histogram.counts[3] = 67;
    histogram.counts[255] = 1;
    histogram.total = 1000;
    const HistogramPicture picture = histogramPicture(histogram);
    ASSERT_EQ(picture.bars.size(), 3u);
    const int wanted[3][4] = {{10, 10, 11, 310}, {16, 10, 17, 110}, {520, 10, 521, 11}};
    for (size_t i = 0; i < 3; ++i) {
        const auto& [left, bottom, right, top] = picture.bars[i];
        EXPECT_EQ((std::vector{left, bottom, right, top}),
                  std::vector(std::begin(wanted[i]), std::end(wanted[i])));
    }
    for (int value = 0; value < 256; ++value) {
        const auto& [x, y] = picture.line[static_cast<size_t>(value)];
        EXPECT_EQ(x, 10 + 2 * value);
        EXPECT_EQ(y, value == 0 ? 70 : value == 3 ? 30 : 10) << value;
    }
}

TEST(HistogramPictureTest, WithoutBytesThereIsAFlatLine) {
    const HistogramPicture picture = histogramPicture({});
    EXPECT_TRUE(picture.bars.empty());
    for (const auto& point : picture.line) EXPECT_EQ(point.y, 10);
}

TEST(HistogramPictureTest, NothingLeavesThePictureWhateverTheCounters) {
    constexpr uint32_t full = std::numeric_limits<uint32_t>::max();
    ByteHistogram histogram;
    histogram.counts.fill(full);
    histogram.total = full;
    const HistogramPicture picture = histogramPicture(histogram);
    for (const auto& bar : picture.bars) {
        EXPECT_EQ(bar.top, 310);
        EXPECT_LT(bar.right, HistogramPicture::width);
    }
    for (const auto& point : picture.line) EXPECT_EQ(point.y, 310);
}

}  // namespace
}  // namespace vistel

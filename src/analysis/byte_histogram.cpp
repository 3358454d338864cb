#include "analysis/byte_histogram.h"

#include <algorithm>
#include <limits>

#include "iff/result_codes.h"

namespace vistel {

namespace {

constexpr uint32_t notCounted = 8;  // at the beginning; as many zeros count at the end

void add(uint32_t& counter, uint32_t more) {
    counter += std::min(more, std::numeric_limits<uint32_t>::max() - counter);
}

// So much of the longest bar.
int barHeight(uint32_t count, uint32_t whole) {
    constexpr uint64_t longestBar = 300;
    return whole == 0 ? 0 : static_cast<int>(count * longestBar / whole);
}

}  // namespace

int countTileBytes(IffReader& chunk, ByteHistogram& histogram) {
    if (!chunk.sizeKnown() || chunk.chunkSize() <= notCounted) return iffOk;
    const uint32_t size = chunk.chunkSize() - notCounted;
    add(histogram.total, size);
    std::array<uint32_t, 256> counts{};
    counts[0] = std::min(size, notCounted);
    std::array<uint8_t, 16 << 10> block;
    uint32_t first = notCounted;
    for (uint32_t left = size; left > 0; first = 0) {
        const uint32_t taken = std::min(left, static_cast<uint32_t>(block.size()));
        if (const int code = chunk.readBytes(block.data(), taken); code != iffOk) return code;
        for (uint32_t i = first; i < taken; ++i) ++counts[block[i]];
        left -= taken;
    }
    for (size_t value = 0; value < counts.size(); ++value)
        add(histogram.counts[value], counts[value]);
    return iffOk;
}

HistogramPicture histogramPicture(const ByteHistogram& histogram) {
    constexpr int margin = 10, barWidth = 2;
    const uint32_t largest = *std::ranges::max_element(histogram.counts);
    HistogramPicture picture;
    for (size_t value = 0; value < histogram.counts.size(); ++value) {
        const uint32_t count = histogram.counts[value];
        const int left = margin + barWidth * static_cast<int>(value);
        if (count > 0)
            picture.bars.push_back(
                {left, margin, left + barWidth - 1, margin + barHeight(count, largest)});
        picture.line[value] = {left, margin + barHeight(count, histogram.total)};
    }
    return picture;
}

}  // namespace vistel

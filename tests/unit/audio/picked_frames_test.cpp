#include "audio/picked_frames.h"

namespace vistel {
namespace {

TEST(PickedFrames, AreTheSameForEverySizeOfAFrame) {
    for (const size_t bytes : {1u, 2u, 3u, 4u, 8u, 16u})
        for (const double speed : {0.1, 0.5, 0.99, 1.0, 1.01, 2.5}) {
            std::vector<uint8_t> input(100 * bytes), output(40 * bytes, 0xEE);
            for (size_t i = 0; i < input.size(); ++i) input[i] = static_cast<uint8_t>(i / bytes);
            pickFrames(input.data(), 100, bytes, speed, output.data(), 40);
            for (size_t i = 0; i < output.size(); ++i)
                ASSERT_EQ(output[i], static_cast<int>(static_cast<double>(i / bytes) * speed));
        }
}

TEST(PickedFrames, AreSpreadInPlaceAndStopAtTheLast) {
    uint8_t frames[8] = {10, 11, 12, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    pickFrames(frames, 3, 1, 0.5, frames, 8);
    const uint8_t expected[8] = {10, 10, 11, 11, 12, 12, 12, 12};
    EXPECT_TRUE(std::equal(frames, frames + 8, expected));
}

}  // namespace
}  // namespace vistel

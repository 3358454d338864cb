#include "audio/picked_frames.h"

#include <algorithm>
#include <cstring>

namespace vistel {

namespace {

int64_t inputOf(int64_t output, int64_t available, double speed) {
    return std::min(static_cast<int64_t>(static_cast<double>(output) * speed), available - 1);
}

template <class Move>
void forEachFrame(int64_t available, double speed, int64_t count, Move move) {
    if (speed < 1)
        for (int64_t i = count - 1; i >= 0; --i) move(inputOf(i, available, speed), i);
    else
        for (int64_t i = 0; i < count; ++i) move(inputOf(i, available, speed), i);
}

// A constant number of bytes is moved as one value.
template <size_t bytes>
void pick(const uint8_t* input, int64_t available, double speed, uint8_t* output, int64_t count) {
    forEachFrame(available, speed, count, [&](int64_t from, int64_t to) {
        std::memmove(output + to * bytes, input + from * bytes, bytes);
    });
}

}  // namespace

void pickFrames(const uint8_t* input, int64_t available, size_t frameBytes, double speed,
                uint8_t* output, int64_t count) {
    if (available < 1) return;
    if (frameBytes == 2) return pick<2>(input, available, speed, output, count);
    if (frameBytes == 4) return pick<4>(input, available, speed, output, count);
    const auto bytes = static_cast<int64_t>(frameBytes);
    forEachFrame(available, speed, count, [&](int64_t from, int64_t to) {
        std::memmove(output + to * bytes, input + from * bytes, frameBytes);
    });
}

}  // namespace vistel

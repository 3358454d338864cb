#include "beeps.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "platform/files.h"
#include "scene.h"

namespace vistel::demo {

namespace {

constexpr uint32_t rate = 44100, channels = 2, bytesPerFrame = 4;
constexpr double pitch = 1000, loudness = 12000;

void append(std::vector<uint8_t>& bytes, uint32_t value, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void append(std::vector<uint8_t>& bytes, const char* tag) {
    bytes.insert(bytes.end(), tag, tag + 4);
}

// The RIFF header of 16-bit PCM samples.
std::vector<uint8_t> header(uint32_t dataBytes) {
    std::vector<uint8_t> bytes;
    append(bytes, "RIFF");
    append(bytes, 36 + dataBytes, 4);
    append(bytes, "WAVE");
    append(bytes, "fmt ");
    append(bytes, 16, 4);
    append(bytes, 1, 2);  // PCM
    append(bytes, channels, 2);
    append(bytes, rate, 4);
    append(bytes, rate * bytesPerFrame, 4);
    append(bytes, bytesPerFrame, 2);
    append(bytes, 16, 2);
    append(bytes, "data");
    append(bytes, dataBytes, 4);
    return bytes;
}

// A second of sound, with the beep that belongs to its first picture.
std::vector<uint8_t> secondWithBeep() {
    std::vector<uint8_t> bytes;
    for (uint32_t i = 0; i < rate / framesPerSecond; ++i) {
        const double value = std::sin(2 * std::numbers::pi * pitch * i / rate) * loudness;
        for (uint32_t channel = 0; channel < channels; ++channel)
            append(bytes, static_cast<uint32_t>(std::lround(value)), 2);
    }
    bytes.resize(size_t{rate} * bytesPerFrame);
    return bytes;
}

}  // namespace

bool writeBeeps(const std::string& name, int frames) {
    const uint32_t soundFrames = static_cast<uint32_t>(uint64_t(frames) * rate / framesPerSecond);
    std::vector<uint8_t> bytes = header(soundFrames * bytesPerFrame);
    const std::vector<uint8_t> second = secondWithBeep();
    const platform::FilePtr file(platform::openFile(name, "w"));
    const auto write = [&](const std::vector<uint8_t>& from, size_t count) {
        return std::fwrite(from.data(), 1, count, file.get()) == count;
    };
    bool written = file && write(bytes, bytes.size());
    for (size_t rest = size_t{soundFrames} * bytesPerFrame; written && rest > 0;) {
        const size_t part = std::min(rest, second.size());
        written = write(second, part);
        rest -= part;
    }
    return written && std::fflush(file.get()) == 0;
}

}  // namespace vistel::demo

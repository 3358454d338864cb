// How fast sound files are read, against copies of the samples as they are handed out.
//
//     sound/copy16, sound/copy24   from one block into a buffer, of 2 and of 4 bytes a sample
//     sound/read16                 a file of as many bytes, by the system's own reads alone
//     sound/wave16                 a WAVE file of 16 bits, whose bytes need no change
//     sound/aiff16                 an AIFF file of 16 bits: bytes exchanged
//     sound/aiff24                 an AIFF file of 24 bits: widened
//
// Every case moves the same eight million samples through the same small buffer, in reads of a
// fifth of a second as they are read while playing; the files lie in the system's cache.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "audio/audio_file.h"
#include "audio/extended_float.h"
#include "host/byte_order.h"

namespace vistel::bench {
namespace {

constexpr size_t samples = 8'000'000;
constexpr int64_t samplesOfARead = 2 * 9600;

void append(std::string& bytes, const char* text) { bytes += text; }
void appendBig(std::string& bytes, uint32_t value, size_t count) {
    uint8_t four[4];
    writeBig32(four, value);
    bytes.append(reinterpret_cast<const char*>(four) + 4 - count, count);
}
void appendLittle(std::string& bytes, uint32_t value, size_t count) {
    uint8_t four[4];
    writeLittle32(four, value);
    bytes.append(reinterpret_cast<const char*>(four), count);
}

std::string aiffHeader(uint32_t width) {
    const auto dataBytes = static_cast<uint32_t>(samples * width / 8);
    std::string bytes;
    append(bytes, "FORM");
    appendBig(bytes, 4 + 26 + 16 + dataBytes, 4);
    append(bytes, "AIFFCOMM");
    appendBig(bytes, 18, 4);
    appendBig(bytes, 2, 2);
    appendBig(bytes, samples / 2, 4);
    appendBig(bytes, width, 2);
    const auto rate = extendedFromDouble(48000);
    bytes.append(reinterpret_cast<const char*>(rate.data()), rate.size());
    append(bytes, "SSND");
    appendBig(bytes, 8 + dataBytes, 4);
    return bytes.append(8, '\0');
}

std::string waveHeader() {
    std::string bytes;
    append(bytes, "RIFF");
    appendLittle(bytes, 36 + samples * 2, 4);
    append(bytes, "WAVEfmt ");
    appendLittle(bytes, 16, 4);
    appendLittle(bytes, 1, 2);
    appendLittle(bytes, 2, 2);
    appendLittle(bytes, 48000, 4);
    appendLittle(bytes, 48000 * 4, 4);
    appendLittle(bytes, 4, 2);
    appendLittle(bytes, 16, 2);
    append(bytes, "data");
    appendLittle(bytes, samples * 2, 4);
    return bytes;
}

// A file that goes with the program.
FILE* streamOf(const std::string& header, size_t sampleBytes) {
    FILE* file = std::tmpfile();
    if (!file) std::abort();
    std::vector<uint8_t> data(samples * sampleBytes);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 7 >> 3);
    if (std::fwrite(header.data(), 1, header.size(), file) != header.size() ||
        std::fwrite(data.data(), 1, data.size(), file) != data.size() || std::fflush(file) != 0)
        std::abort();
    std::rewind(file);
    return file;
}

AFfilehandle* fileOf(const std::string& header, size_t sampleBytes) {
    FILE* file = streamOf(header, sampleBytes);
    AFfilehandle* handle = AFopenfd(platform::streamDescriptor(file), "r", nullptr);
    if (!handle) std::abort();
    return handle;
}

uint8_t* buffer() {
    static std::vector<uint8_t> bytes(samplesOfARead * 4, 1);
    return bytes.data();
}

void copyAll(size_t sampleBytes) {
    static const std::vector<uint8_t> block(samples * 4, 3);
    const size_t bytes = samplesOfARead * sampleBytes;
    for (size_t place = 0; place < samples * sampleBytes; place += bytes) {
        std::memcpy(buffer(), block.data() + place, std::min(bytes, samples * sampleBytes - place));
        benchmark::ClobberMemory();
    }
}

void readBytes(int file) {
    const size_t bytes = samplesOfARead * 2;
    if (lseek(file, 0, SEEK_SET) != 0) std::abort();
    for (size_t place = 0; place < samples * 2; place += bytes)
        if (read(file, buffer(), std::min(bytes, samples * 2 - place)) <= 0) std::abort();
}

void readAll(AFfilehandle* file) {
    AFseekframe(file, afDefaultTrack, 0);
    int64_t all = 0;
    for (int64_t got; (got = AFreadframes(file, afDefaultTrack, buffer(), samplesOfARead / 2)) > 0;)
        all += got;
    if (all != samples / 2) std::abort();
}

void add(const char* name, const std::function<void()>& run) {
    benchmark::RegisterBenchmark(name, [run](benchmark::State& state) {
        for (auto _ : state) run();
    });
}

}  // namespace
}  // namespace vistel::bench

int main(int argc, char** argv) {
    using namespace vistel::bench;
    benchmark::Initialize(&argc, argv);
    add("sound/copy16", [] { copyAll(2); });
    add("sound/copy24", [] { copyAll(4); });
    const auto addFile = [](const char* name, const std::string& header, size_t sampleBytes) {
        add(name, [file = fileOf(header, sampleBytes)] { readAll(file); });
    };
    add("sound/read16",
        [file = vistel::platform::streamDescriptor(streamOf("", 2))] { readBytes(file); });
    addFile("sound/wave16", waveHeader(), 2);
    addFile("sound/aiff16", aiffHeader(16), 2);
    addFile("sound/aiff24", aiffHeader(24), 3);
    benchmark::RunSpecifiedBenchmarks();
}

// How fast the tiles of a 1920 x 1080 frame become pixels, against copies of as many bytes.
//
//     copy/...            8,294,400 bytes from one block to another, both touched before
//     decode/PICTURE/SET  every tile of the picture into a touched plane, by one set of kernels
//     naive/PICTURE       the same a byte at a time: unpack, place, exchange, three passes
//     fresh/...           into memory just taken from the system, its page faults included
//
// Compare medians of one run with --benchmark_enable_random_interleaving=true: every case moves the
// same number of bytes into the plane.

#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <chrono>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "bench_pictures.h"
#include "iff/tile_codec.h"
#include "naive_decoder.h"
#include "platform/memory.h"

namespace vistel::bench {
namespace {

constexpr uint32_t width = 1920, height = 1080;
constexpr size_t planeBytes = size_t{width} * height * sizeof(uint32_t);

// What a case decodes: the colour tiles of a picture, or its depth.
struct TileSet {
    TileFormat format;
    std::vector<PackedTile> tiles;
    bool depth = false;
};

const TileSet& tileSet(PictureKind kind) {
    static std::map<PictureKind, TileSet> sets;
    TileSet& set = sets[kind];
    if (!set.tiles.empty()) return set;
    const Picture picture = makePicture(kind);
    set.depth = kind == PictureKind::depth;
    set.format = set.depth ? depthTileFormat() : colourTileFormat(picture.header());
    set.tiles = set.depth ? depthTiles(picture) : colourTiles(picture);
    return set;
}

bool decodeTiles(TileDecoder& decoder, const TileSet& set, const TileTarget& target) {
    for (const PackedTile& tile : set.tiles) {
        const uint8_t* const data = tile.data.data();
        const size_t size = tile.data.size();
        const int code = set.depth
                             ? decoder.decodeDepth(tile.rect, data, size, target)
                             : decoder.decodeColour(set.format, tile.rect, data, size, target);
        if (code != 0) return false;
    }
    return true;
}

// Memory for one plane, taken as frames take it; null when the system has none.
class Block {
 public:
    Block() : start_(platform::reserveMemory(planeBytes)) {
        if (start_ && !platform::commitMemory(start_, planeBytes)) release();
    }
    ~Block() { release(); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    uint32_t* pixels() const { return static_cast<uint32_t*>(start_); }

 private:
    void release() {
        if (start_) platform::releaseMemory(start_, planeBytes);
        start_ = nullptr;
    }
    void* start_;
};

// One touched plane for all cases, as a viewer that replaces one frame by another has it.
uint32_t* touchedPlane() {
    static const Block block;
    static const bool touched = block.pixels() && std::memset(block.pixels(), 1, planeBytes);
    return touched ? block.pixels() : nullptr;
}

const uint8_t* copySource() {
    static const std::vector<uint8_t> source(planeBytes, 3);
    return source.data();
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<int64_t>(planeBytes) * state.iterations());
}

void copyPlain(void* to, const void* from) {
    std::memcpy(to, from, planeBytes);
    benchmark::ClobberMemory();
}

__attribute__((target("avx2"))) void copyStreaming(void* to, const void* from) {
    auto* out = static_cast<__m256i*>(to);
    const auto* in = static_cast<const __m256i*>(from);
    for (size_t i = 0; i < planeBytes / sizeof(__m256i); ++i)
        _mm256_stream_si256(out + i, _mm256_loadu_si256(in + i));
    _mm_sfence();
}

void runCopy(benchmark::State& state, void (*copy)(void*, const void*)) {
    for (auto _ : state) copy(touchedPlane(), copySource());
    countBytes(state);
}

void runDecode(benchmark::State& state, PictureKind kind, const TileKernels* kernels) {
    const TileSet& set = tileSet(kind);
    TileDecoder decoder(*kernels);
    const TileTarget target{touchedPlane(), width, 1, true};
    for (auto _ : state) {
        if (!decodeTiles(decoder, set, target)) return state.SkipWithError("no memory");
        decoder.settle();
    }
    countBytes(state);
}

void runNaive(benchmark::State& state, PictureKind kind) {
    const TileSet& set = tileSet(kind);
    NaiveDecoder decoder;
    uint32_t* const plane = touchedPlane();
    for (auto _ : state) {
        for (const PackedTile& tile : set.tiles)
            decoder.placeTile(tile.rect, tile.data, plane, width);
        NaiveDecoder::exchange(plane, size_t{width} * height);
    }
    countBytes(state);
}

// Runs `fill` into memory that the system has just supplied. The same amount is touched and freed
// before each run, so that what the system itself keeps warm is the same for every case.
template <class Fill>
void runFresh(benchmark::State& state, Fill fill) {
    using Clock = std::chrono::steady_clock;
    for (auto _ : state) {
        if (const Block before; before.pixels()) std::memset(before.pixels(), 1, planeBytes);
        const auto start = Clock::now();
        const Block block;
        if (!block.pixels() || !fill(block.pixels())) return state.SkipWithError("no memory");
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    countBytes(state);
}

void runFreshDecode(benchmark::State& state, PictureKind kind) {
    const TileSet& set = tileSet(kind);
    TileDecoder decoder;
    runFresh(state, [&](uint32_t* pixels) {
        return decodeTiles(decoder, set, {pixels, width, 1, false});
    });
}

void runFreshCopy(benchmark::State& state) {
    runFresh(state, [](uint32_t* pixels) {
        copyPlain(pixels, copySource());
        return true;
    });
}

void addCases() {
    const auto add = [](const std::string& name, auto... run) {
        return benchmark::RegisterBenchmark(name.c_str(), run...)->Unit(benchmark::kMicrosecond);
    };
    add("copy/plain", runCopy, copyPlain);
    if (avx2TileKernels()) add("copy/streaming", runCopy, copyStreaming);
    const struct {
        const char* name;
        const TileKernels* kernels;
    } sets[] = {
        {"scalar", &scalarTileKernels()}, {"sse2", sse2TileKernels()}, {"avx2", avx2TileKernels()}};
    for (const PictureKind kind :
         {PictureKind::flat, PictureKind::typical, PictureKind::raw, PictureKind::depth})
        for (const auto& set : sets)
            if (set.kernels)
                add("decode/" + std::string(pictureName(kind)) + "/" + set.name, runDecode, kind,
                    set.kernels);
    for (const PictureKind kind : {PictureKind::flat, PictureKind::typical}) {
        add("naive/" + std::string(pictureName(kind)), runNaive, kind);
        add("fresh/" + std::string(pictureName(kind)), runFreshDecode, kind)->UseManualTime();
    }
    add("fresh/copy", runFreshCopy)->UseManualTime();
}

}  // namespace
}  // namespace vistel::bench

int main(int argc, char** argv) {
    vistel::bench::addCases();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

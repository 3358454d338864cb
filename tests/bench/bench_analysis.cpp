// How fast a 1920 x 1080 frame is prepared for display, against a copy of its 8,294,400 bytes.
//
//     copy              one touched block to another
//     look_up/N/SET     the look-up table on N planes (1 mask only, 3 colours, 4 all)
//     grey_plane/SET    one plane as grey; luminance/SET, grey_bytes/SET likewise
//     relief/SET        shades of a frame, row by row by the kernel's formula
//     relief_table      the same through the table of all differences, as ReliefShader does it
//     blend/SET         a relief under the colours
//
// Every round takes another frame, as playing does: none of it is in a cache any more. Compare
// medians of processor time of one run with --benchmark_enable_random_interleaving=true
// --benchmark_repetitions=9: every case but the relief's reads and writes as many bytes as the
// copy.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "analysis/colour_lut.h"
#include "analysis/relief_table.h"
#include "analysis/view_kernels.h"
#include "platform/memory.h"

namespace vistel::bench {
namespace {

constexpr size_t width = 1920, height = 1080, pixels = width * height;

uint32_t* touchedBlock() {
    const size_t bytes = pixels * sizeof(uint32_t);
    void* block = platform::reserveMemory(bytes);
    if (!block || !platform::commitMemory(block, bytes)) std::abort();
    std::memset(block, 1, bytes);
    return static_cast<uint32_t*>(block);
}

// Pictures of soft slopes with some grain, each in its own place.
const uint32_t* makePicture(uint32_t seed) {
    uint32_t* block = touchedBlock();
    std::mt19937 random(seed);
    for (size_t i = 0; i < pixels; ++i) {
        const auto x = static_cast<uint32_t>(i % width), y = static_cast<uint32_t>(i / width);
        const uint32_t grain = random() & 7;
        block[i] = 0xFF000000 | ((x / 8 + grain) & 255) << 16 | ((y / 5 + grain) & 255) << 8 |
                   ((x + y) / 12 & 255);
    }
    return block;
}

// The next frame to prepare: while an animation plays, none of it is in a cache any more.
const uint32_t* picture() {
    constexpr size_t frames = 12;
    static const auto made = [] {
        std::array<const uint32_t*, frames> all;
        for (uint32_t i = 0; i < frames; ++i) all[i] = makePicture(i);
        return all;
    }();
    static size_t next = 0;
    return made[next++ % frames];
}

uint32_t* display() {
    static uint32_t* block = touchedBlock();
    return block;
}

uint8_t* shades() {
    static const auto block = std::make_unique<uint8_t[]>(pixels);
    return block.get();
}

const ByteTables& tables() {
    static const ByteTables made = [] {
        ColourLut lut;
        lut.controls.gamma = {0.45f, 0.5f, 0.6f};
        lut.build();
        ByteTables copied;
        for (int plane = 0; plane < 4; ++plane)
            std::copy_n(lut.table(plane), 256, copied.plane[plane]);
        return copied;
    }();
    return made;
}

template <class Work>
void add(const std::string& name, Work work) {
    benchmark::RegisterBenchmark(name.c_str(), [work](benchmark::State& state) {
        work();  // every block is touched before the clock runs
        for (auto _ : state) {
            work();
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(state.iterations() * pixels * sizeof(uint32_t));
    })->Unit(benchmark::kMillisecond);
}

void addKernels(const ViewKernels& set) {
    const std::string name = set.name;
    constexpr std::pair<unsigned, const char*> planeSets[] = {{1, "1"}, {14, "3"}, {15, "4"}};
    for (const auto& [planes, count] : planeSets)
        add(std::string("look_up/") + count + "/" + name, [&set, planes = planes] {
            set.lookUp(tables(), planes, picture(), pixels, display());
        });
    add("grey_plane/" + name, [&set] { set.greyPlane(2, 0, picture(), pixels, display()); });
    add("luminance/" + name, [&set] { set.luminance(picture(), pixels, display()); });
    add("grey_bytes/" + name, [&set] { set.greyBytes(shades(), pixels, display()); });
    add("relief/" + name, [&set] {
        const uint32_t* frame = picture();
        for (size_t y = 0; y < height; ++y) {
            const uint32_t* row = frame + y * width;
            set.shadeRow(0.025f, row, y > 0 ? row - width : nullptr, width, shades() + y * width);
        }
    });
    add("blend/" + name, [&set] {
        set.blendRelief({327, 32768}, shades(), picture(), pixels, display());
    });
}

}  // namespace
}  // namespace vistel::bench

int main(int argc, char** argv) {
    using namespace vistel;
    using namespace vistel::bench;
    benchmark::Initialize(&argc, argv);
    add("copy", [] { std::memcpy(display(), picture(), pixels * sizeof(uint32_t)); });
    addKernels(scalarViewKernels());
    for (auto* find : {sse2ViewKernels, avx2ViewKernels, vbmiViewKernels})
        if (const ViewKernels* set = find()) addKernels(*set);
    add("relief_table", [] {
        static ReliefTable table(-0.1f * -0.25f);
        const uint32_t* frame = picture();
        for (size_t y = 0; y < height; ++y) {
            const uint32_t* row = frame + y * width;
            table.shadeRow(row, y > 0 ? row - width : nullptr, width, shades() + y * width);
        }
    });
    benchmark::RunSpecifiedBenchmarks();
}

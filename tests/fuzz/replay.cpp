// Runs a fuzz target over stored inputs: every file of a folder, and each of them cut at every one of
// its first 600 bytes.
//
//     replay TARGET FOLDER

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#define FUZZ_TARGET(name) extern "C" int name(const uint8_t* data, size_t size);
#include "fuzz_targets.inc"
#undef FUZZ_TARGET

namespace {

using Run = int (*)(const uint8_t* data, size_t size);

// Null when there is no such target.
Run targetOf(const char* wanted) {
#define FUZZ_TARGET(name) \
    if (std::strcmp(wanted, #name) == 0) return name;
#include "fuzz_targets.inc"
#undef FUZZ_TARGET
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const Run run = argc == 3 ? targetOf(argv[1]) : nullptr;
    if (!run) {
        std::fputs("usage: replay TARGET FOLDER\n", stderr);
        return 1;
    }
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
        run(data, bytes.size());
        for (size_t cut = 0; cut < bytes.size() && cut < 600; ++cut) {
            const std::vector<uint8_t> part(data, data + cut);  // own block: overreads are seen
            run(part.data(), part.size());
        }
        ++inputs;
    }
    std::fprintf(stderr, "replayed %d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}

// Runs a fuzz target over stored inputs: every file of the folders named on the command line, and
// each of them cut at every one of its first 600 bytes.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) continue;
        for (const auto& entry : fs::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
            LLVMFuzzerTestOneInput(data, bytes.size());
            for (size_t cut = 0; cut < bytes.size() && cut < 600; ++cut) {
                const std::vector<uint8_t> part(data, data + cut);  // own block: overreads are seen
                LLVMFuzzerTestOneInput(part.data(), part.size());
            }
            ++inputs;
        }
    }
    std::fprintf(stderr, "replayed %d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}

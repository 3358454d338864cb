// Walks hostile containers: every group entered or, by the first byte's bits, ignored, skipped or
// parsed; bodies read or skipped; as a file and as a stream.
//     build/fuzz/bin/fuzz_container -max_len=4096 tests/fuzz/corpus/fuzz_container

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "iff/file_kind.h"
#include "iff/iff_reader.h"
#include "input_file.h"

namespace {

using vistel::IffReader;

int walk(IffReader& group) {
    const uint8_t mode = *static_cast<const uint8_t*>(group.user);
    if ((mode & 4) && group.depth() == 2) return vistel::iffBlockIgnored;
    if (mode & 8) return group.parseGroup(&group.handlers);
    IffReader chunks;
    int result = group.enter(chunks);
    if (result != vistel::iffOk) return result;
    uint64_t before = 0;
    do {
        result = chunks.dispatch();
        if (result >= 0 && chunks.position() <= before) std::abort();  // every step moves forward
        before = chunks.position();
        if (result <= 0) continue;
        uint8_t body[64];
        const uint64_t left = chunks.chunkBytesLeft();
        const size_t wanted = left < sizeof body ? static_cast<size_t>(left) : sizeof body;
        result = (mode & 2) ? chunks.readBytes(body, wanted) : vistel::iffOk;
    } while (result == vistel::iffOk);
    chunks.leave();
    return result == vistel::iffEndOfGroup ? vistel::iffOk : result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    FILE* file = vistel::fileOf(data + 1, size - 1);
    IffReader root;
    root.user = const_cast<uint8_t*>(data);
    root.handlers = {walk, walk, walk, walk, {}};
    int result = vistel::parseWholeFile(root, file);
    if (result > 0 || vistel::errorText(result).find("unknown") != std::string::npos) std::abort();

    std::rewind(file);
    result = root.open(file, (data[0] & 1) != 0);
    while (result == vistel::iffOk) result = root.dispatch();

    std::rewind(file);
    vistel::probeStream(file, true);
    return 0;
}

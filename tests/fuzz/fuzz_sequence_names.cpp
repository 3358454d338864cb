// Names of frame files: building them from patterns, taking them apart, reading their numbers.
//
// Input: number, width, k, range start, end, step (four bytes each), one byte of flags, the name.
// Run: bin/fuzz_sequence_names tests/fuzz/corpus/fuzz_sequence_names
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "sequence/frame_name.h"

using namespace vistel;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// A name taken apart and put together again is the same name while its number fits.
void checkPickedName(const Tstring& name) {
    const std::optional<PickedName> picked = splitPickedName(name);
    if (!picked) return;
    const Tstring again =
        picked->before + paddedNumber(picked->number, picked->padWidth) + picked->after;
    const bool clamped = picked->number == INT32_MAX || picked->number == INT32_MIN;
    const bool minusZero = picked->number == 0;  // "-0" has no sign any more
    require(clamped || minusZero || again == name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    int32_t values[6] = {};
    if (size < sizeof values + 1) return 0;
    std::memcpy(values, data, sizeof values);
    const Tstring name(reinterpret_cast<const char*>(data) + sizeof values + 1,
                       size - sizeof values - 1);
    const NumberStyle style{values[1], (data[sizeof values] & 1) != 0};

    require(numberedName(name, values[0], style).size() <= name.size() + widestNumber + 1);
    (void)numberedNameInFolder(name, values[0], style);
    (void)unpaddedName(name, values[0]);
    require(atSignWidth(name) >= 0);
    require(hashReplaced(name, values[0], values[1]).empty() == (name.find('#') == Tstring::npos) ||
            name == "#");

    const std::optional<int> number = frameNumberAt({values[3], values[4], values[5]}, values[2]);
    if (number && values[4] >= 1 && values[3] <= values[4]) {
        require(*number >= values[3] && *number <= values[4]);
    }
    checkPickedName(name);
    const StemParts parts = splitStem(name);
    require(name.ends_with(parts.base) && name.starts_with(parts.folder));
    const std::optional<NumberedFile> file = readNumberedFile(name, parts.base);
    require(!file || file->zeroWidth >= 0);
    (void)readNumberedFile(name, "");
    return 0;
}

// Loads any bytes as a frame file, the way the first bytes say: which form, what is read, how large
// it is shown, with or without the report.
//
// Input: one byte of switches, one of the wanted form and the deepest level, one of the shrink
// factor; the file.
//     build/fuzz/bin/fuzz_image -max_len=4096 -dict=tests/fuzz/frame.dict
//     tests/fuzz/corpus/fuzz_image

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "iff/image_loader.h"
#include "iff/result_codes.h"
#include "input_file.h"

using namespace vistel;

namespace {

constexpr size_t optionBytes = 3;
// However large an image is said to be, it is shown no larger than this.
constexpr uint32_t longestSide = 400;

// The report goes nowhere.
void silenceOutput() {
    static const bool done =
        std::freopen(std::filesystem::exists("/dev/null") ? "/dev/null" : "NUL", "w", stdout);
    if (!done) std::abort();
}

void requireListed(int code) {
    for (const ResultText& row : resultTexts())
        if (row.code == code) return;
    std::abort();
}

// Everything that is handed over can be read.
int readAll(void* owner, FrameStore& frame, int error) {
    requireListed(error);
    uint32_t sum = 0;
    const size_t pixels = size_t(frame.width) * size_t(frame.height);
    if (pixels > size_t{longestSide} * longestSide) std::abort();
    for (size_t i = 0; i < pixels && !frame.colour.empty(); ++i) sum += frame.colour.data()[i];
    for (size_t i = 0; i < pixels && !frame.z.empty(); ++i) sum += frame.z.data()[i] > 0;
    *static_cast<volatile uint32_t*>(owner) = sum;
    return iffOk;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < optionBytes) return 0;
    ImageLoadRequest request;
    request.stream = fileOf(data + optionBytes, size - optionBytes);
    request.verbose = (data[0] & 1) != 0;
    request.loadPixels = (data[0] & 2) == 0;
    request.showAll = (data[0] & 4) != 0;
    request.loadZ = (data[0] & 8) == 0;
    request.wantedForm = data[1] & 3;
    if (data[1] & 4) request.maxLevel = data[1] >> 3;
    request.fit.shrink = data[2] & 7;
    request.fit.magnify = data[2] >> 3 & 7;
    request.fit.maxWidth = request.fit.maxHeight = longestSide;
    static volatile uint32_t sum;
    request.owner = const_cast<uint32_t*>(&sum);
    request.formRead = readAll;
    if (request.verbose) silenceOutput();
    FrameStore frame;
    requireListed(loadImages(request, frame));
    return 0;
}

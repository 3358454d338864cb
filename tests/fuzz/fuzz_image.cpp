// Loads any bytes as a frame file: first all forms, then the second one alone at half size.
// Run with libFuzzer: build/fuzz/bin/fuzz_image tests/fuzz/corpus/fuzz_image

#include <cstdint>
#include <cstdio>

#include "iff/image_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* const file = std::tmpfile();
    if (!file) return 0;
    if (size > 0) std::fwrite(data, 1, size, file);
    for (int wanted : {0, 2}) {
        std::rewind(file);
        vistel::ImageLoadRequest request;
        request.stream = file;
        request.wantedForm = wanted;
        request.fit.shrink = wanted ? 2 : 1;
        vistel::FrameStore frame;
        (void)vistel::loadImages(request, frame);
    }
    std::fclose(file);
    return 0;
}

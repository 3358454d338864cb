// Reads any bytes as an SGI picture.
//     build/fuzz/bin/fuzz_sgi -max_len=4096 tests/fuzz/corpus/fuzz_sgi

#include <cstdlib>

#include "codecs.h"
#include "platform/files.h"

using namespace vistel;

static void readAs(const Codec& codec, const uint8_t* data, size_t size) {
    const platform::FilePtr file(std::tmpfile());
    if (!file || (size > 0 && std::fwrite(data, size, 1, file.get()) != 1)) std::abort();
    std::rewind(file.get());
    Picture picture;
    const Failure failure = codec.read({"picture", file.get(), size}, picture);
    if (failure ? failure->empty() : picture.samples.empty() && picture.wideSamples.empty())
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readAs(sgiCodec, data, size);
    return 0;
}

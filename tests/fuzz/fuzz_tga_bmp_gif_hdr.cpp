// Reads any bytes as a Targa, a bitmap, a GIF and a Radiance picture.
//     build/fuzz/bin/fuzz_tga_bmp_gif_hdr -max_len=4096 tests/fuzz/corpus/fuzz_tga_bmp_gif_hdr

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
    if (failure ? failure->empty() : picture.samples.empty()) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const Codec* codec : {&tgaCodec, &bmpCodec, &gifCodec, &hdrCodec})
        readAs(*codec, data, size);
    return 0;
}

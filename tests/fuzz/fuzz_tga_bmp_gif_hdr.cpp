// Reads any bytes as a Targa, a bitmap, a GIF and a Radiance picture.
//     build/fuzz/bin/fuzz_tga_bmp_gif_hdr -max_len=4096 tests/fuzz/corpus/fuzz_tga_bmp_gif_hdr

#include "codecs.h"
#include "read_picture.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const Codec* codec : {&tgaCodec, &bmpCodec, &gifCodec, &hdrCodec})
        readAs(*codec, data, size);
    return 0;
}

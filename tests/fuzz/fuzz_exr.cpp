// Reads any bytes as an OpenEXR picture: the walk over its headers, and what the library makes of
// those that pass.
//     build/fuzz/bin/fuzz_exr -max_len=4096 tests/fuzz/corpus/fuzz_exr

#include "codecs.h"
#include "read_picture.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readAs(exrCodec, data, size);
    return 0;
}

// Reads any bytes as an SGI picture.
//     build/fuzz/bin/fuzz_sgi -max_len=4096 tests/fuzz/corpus/fuzz_sgi

#include "codecs.h"
#include "read_picture.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readAs(sgiCodec, data, size);
    return 0;
}

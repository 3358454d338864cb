// Reads any bytes as a portable map or float map.
//     build/fuzz/bin/fuzz_pnm -max_len=4096 tests/fuzz/corpus/fuzz_pnm

#include "codecs.h"
#include "read_picture.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readAs(pnmCodec, data, size);
    readAs(pfmCodec, data, size);
    return 0;
}

// Reads any bytes as a DPX or Cineon film scan.
//     build/fuzz/bin/fuzz_dpx -max_len=4096 tests/fuzz/corpus/fuzz_dpx

#include "codecs.h"
#include "read_picture.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readAs(dpxCodec, data, size);
    readAs(cineonCodec, data, size);
    return 0;
}

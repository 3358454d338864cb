// Reads any bytes as an AIFF or AIFF-C file.
//     build/fuzz/bin/fuzz_aiff -max_len=4096 -dict=tests/fuzz/sound.dict
//     tests/fuzz/corpus/fuzz_aiff

#include "read_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vistel::readSound(vistel::afAiff, data, size);
    return 0;
}

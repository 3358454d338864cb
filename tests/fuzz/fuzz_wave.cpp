// Reads any bytes as a WAVE file.
//     build/fuzz/bin/fuzz_wave -max_len=4096 -dict=tests/fuzz/sound.dict
//     tests/fuzz/corpus/fuzz_wave

#include "read_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vistel::readSound(vistel::afWave, data, size);
    return 0;
}

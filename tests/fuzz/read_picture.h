// Reads any bytes as a picture of one type: it is there or a reason why not.
#pragma once

#include <cstdlib>

#include "codec.h"
#include "input_file.h"
#include "memory_rule.h"

namespace vistel {

inline void readAs(const Codec& codec, const uint8_t* data, size_t size) {
    Picture picture;
    picture.mostBytes = justifiedBytes(codec.key, size);  // as the converter does
    const Failure failure = codec.read({"picture", fileOf(data, size), size}, picture);
    const bool there = !picture.samples.empty() || !picture.wideSamples.empty();
    if (failure ? failure->empty() : !there) std::abort();
}

}  // namespace vistel

// Which sound belongs to the frames.
#pragma once

#include <cstdint>

#include "host/tstring.h"

namespace vistel {

struct SoundOptions {
    Tstring audioFile;        // -u
    int32_t audioOffset = 0;  // frame at which the sound starts
    int32_t soundOn = 0;
    int32_t soundLoaded = 0;
};

}  // namespace vistel

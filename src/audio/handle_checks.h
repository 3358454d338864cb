// What an operation looks at before it touches a handle; each reports what it finds wrong.
#pragma once

#include <cstdint>

#include "audio/audio_records.h"

namespace vistel {

// Not null and of the right magic.
[[nodiscard]] bool isHandle(const char* operation, const AFfilehandle* file);
// The same, and the track's number is that of the only one.
[[nodiscard]] bool isTrackOf(const char* operation, const AFfilehandle* file, int32_t track);
// Whether a reading or writing operation was given the number of the file's track.
[[nodiscard]] bool hasTrack(const char* operation, const AFfilehandle& file, int32_t track);

}  // namespace vistel

#include "audio/header_bytes.h"

#include "audio/audio_errors.h"

namespace vistel {

bool headerWritten(const char* operation, const char* part, int bytes, int result) {
    if (result == bytes) return true;
    AFreporterror(afWriteFailed, "%s: %s tried to write %d bytes, write returned %d\n", operation,
                  part, bytes, result);
    return false;
}

}  // namespace vistel

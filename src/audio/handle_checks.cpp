#include "audio/handle_checks.h"

#include "audio/audio_errors.h"

namespace vistel {

bool isHandle(const char* operation, const AFfilehandle* file) {
    if (file && file->magic == afHandleMagic) return true;
    AFreporterror(afBadHandle, file ? "%s: invalid file handle\n" : "%s: null file handle\n",
                  operation);
    return false;
}

bool isTrackOf(const char* operation, const AFfilehandle* file, int32_t track) {
    if (!isHandle(operation, file)) return false;
    if (track == afDefaultTrack) return true;
    AFreporterror(afBadTrack, "%s: invalid track id %d\n", operation, track);
    return false;
}

bool hasTrack(const char* operation, const AFfilehandle& file, int32_t track) {
    if (track == afDefaultTrack) return true;
    AFreporterror(afBadTrack, "%s: no track corresponding to id %d in file %s\n", operation, track,
                  file.name.c_str());
    return false;
}

}  // namespace vistel

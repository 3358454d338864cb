// What a handle tells of its file.
#include <algorithm>

#include "audio/audio_file.h"
#include "audio/format_table.h"
#include "audio/handle_checks.h"

namespace vistel {

int32_t AFgetfilefmt(AFfilehandle* file, int32_t* version) {
    if (!isHandle("AFgetfilefmt", file)) return 0;
    const auto query = audioFormats[file->tablePosition].version;
    if (version) *version = query ? query(*file) : 0;
    return file->format;
}

int64_t AFgetframecnt(AFfilehandle* file, int32_t track) {
    if (!isTrackOf("AFgetframecnt", file, track)) return 0;
    return file->track().samples / std::max(file->track().channels, 1);
}

int32_t AFgetchannels(AFfilehandle* file, int32_t track) {
    return isTrackOf("AFgetchannels", file, track) ? file->track().channels : 0;
}

double AFgetrate(AFfilehandle* file, int32_t track) {
    return isTrackOf("AFgetrate", file, track) ? file->track().rate : 0.0;
}

int32_t AFgetsampfmt(AFfilehandle* file, int32_t, int32_t* format, int32_t* width) {
    if (!isHandle("AFgetsampfmt", file)) return -1;
    *format = file->track().sampleFormat;
    *width = file->track().width;
    return 0;
}

}  // namespace vistel

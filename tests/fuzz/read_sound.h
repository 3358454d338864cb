// Any bytes as a sound file of one format: opened, asked, read to the end in reads of several
// sizes, sought and read again.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <vector>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "input_file.h"
#include "platform/files.h"

namespace vistel {

inline void readSound(int32_t format, const uint8_t* data, size_t size) {
    AFseterrorfunc([](int32_t, const char*) {});
    AFfilesetup setup;
    setup.format = format;
    const int descriptor = dup(platform::streamDescriptor(fileOf(data, size)));
    AFfilehandle* file = AFopenfd(descriptor, "r", &setup);
    if (!file) return;
    const int64_t promised = AFgetframecnt(file, afDefaultTrack);
    const int32_t channels = AFgetchannels(file, afDefaultTrack);
    std::vector<uint8_t> buffer(static_cast<size_t>(std::max(channels, 1)) * 4 * 5);
    for (const int64_t start : {int64_t{0}, promised / 2, promised - 1}) {
        if (AFseekframe(file, afDefaultTrack, start) != 0) std::abort();
        int64_t all = 0, reads = 0;
        for (int64_t got;
             (got = AFreadframes(file, afDefaultTrack, buffer.data(), 1 + reads % 5)) > 0; ++reads)
            all += got;
        // A byte of the file is a byte of a sample at most.
        if (all > std::max<int64_t>(promised, 0) || all > static_cast<int64_t>(size)) std::abort();
    }
    AFclosefile(file);
}

}  // namespace vistel

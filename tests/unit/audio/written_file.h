// A sound file that is written and read back byte for byte.
#pragma once

#include "audio/audio_files.h"

namespace vistel::test {

struct WrittenFile {
    explicit WrittenFile(const AFfilesetup& setup) : handle(AFopenfile(file.name(), "w", &setup)) {}
    AFfilehandle* operator->() const { return handle.get(); }

    template <class Sample>
    int64_t write(const std::vector<Sample>& samples) {
        const auto frames = static_cast<int64_t>(samples.size()) / handle->track().channels;
        return AFwriteframes(handle.get(), afDefaultTrack, samples.data(), frames);
    }
    // What the file holds when it is closed.
    Bytes closed() {
        EXPECT_EQ(AFclosefile(handle.release()), 0);
        return file.read();
    }

    TemporaryFile file;
    Handle handle;
};

inline AFfilesetup setupOf(int32_t format, int32_t channels, int32_t width) {
    AFfilesetup setup;
    setup.format = format;
    setup.channels = channels;
    setup.width = width;
    return setup;
}

}  // namespace vistel::test

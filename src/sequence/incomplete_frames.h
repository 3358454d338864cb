// The frames of the current source that were read incompletely: their files are cut, or were still
// being written. They are read again when their files have changed.
#pragma once

#include <map>
#include <optional>

#include "host/tstring.h"
#include "platform/files.h"

namespace vistel {

class IncompleteFrames {
 public:
    void forget() { files_.clear(); }
    void forget(int number) { files_.erase(number); }
    // The frame is a part of what the file held, which had this stamp before it was read.
    void note(int number, const Tstring& path, const platform::FileStamp& stamp);
    // Whether the file of an incomplete frame may hold more than was read of it. It is asked of the
    // file each time.
    bool haveChanged(int number) const;

 private:
    struct File {
        Tstring path;
        // None where the file had just been written: it may change without its stamp telling.
        std::optional<platform::FileStamp> stamp;
    };
    std::map<int, File> files_;  // by frame number
};

}  // namespace vistel

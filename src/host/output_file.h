// A file that is written from its start to its end, and takes its target's place only once it is
// whole and on disk.
#pragma once

#include <cstdio>
#include <string>

#include "platform/unfinished_file.h"

namespace vistel {

// What is no regular file (a device, a named pipe) is written in place.
class OutputFile {
 public:
    // The stream is the caller's and to be closed before `finish` and before the object goes. Null
    // with errno set on failure, for a link that leads nowhere ENOENT, for one in a circle ELOOP.
    [[nodiscard]] FILE* open(const std::string& path);
    // See UnfinishedFile.
    void beginWriteOut() {
        if (!inPlace_) unfinished_.beginWriteOut();
    }
    // False with errno set on failure: the target is then as it was.
    [[nodiscard]] bool finish() { return inPlace_ || unfinished_.finish(); }

 private:
    platform::UnfinishedFile unfinished_;
    bool inPlace_ = false;
};

}  // namespace vistel

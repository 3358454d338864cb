// A file that is made where nobody takes it for the one that it is to become, and becomes that once
// it is whole. win32 and linux implement all of this each; there is no headless one.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace vistel::platform {

// The file goes with the object unless it was finished, and also when the process is interrupted or
// told to end (Ctrl+C, SIGTERM, SIGHUP, a console that is closed), which then ends as it would have
// without; where the system can, whatever ends the process. At most one at a time; a relative name
// counts from the current directory, which is to stay.
//
// It lies in the folder of its target: without a name where the file system has such files, else
// under one that says what it is ("vistel-unfinished-0.tmp"). While it is made nobody may read it
// who may not read the target.
//
// A target that has several names (hard links), that belongs to somebody else, or whose folder may
// not be written to, cannot be replaced without harm: the whole file is then copied into it. Room
// for it is taken before the first byte is changed, and a request to end waits for the last one;
// only a failing disk or machine can leave such a target half written.
class UnfinishedFile {
 public:
    enum class Name { whereNeeded, always };

    UnfinishedFile() = default;
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    // Creates the file that is to become `target`, a regular file or nothing yet and no link
    // (followLinks), for writing and reading back, always binary. Null with errno set on failure:
    // also when the target may not be written. The stream is the caller's and to be closed before
    // `finish` and before the object goes, whose memory it writes from.
    [[nodiscard]] FILE* create(const std::string& target, Name named = Name::whereNeeded);
    // What the system has got so far may begin its way to the disk: less is left to wait for.
    void beginWriteOut();
    // Makes it the target, once its bytes are on disk, with the permissions that the target had, or
    // those that new files have.
    // False with errno set on failure: it then still goes with the object.
    [[nodiscard]] bool finish();

 private:
    static constexpr size_t bufferBytes = size_t{1} << 18;

    std::string target_;
    std::string name_;      // empty: it has none
    intptr_t handle_ = -1;  // the open file; -1: there is none
    std::vector<char> buffer_;  // of the stream
    bool copied_ = false;   // into the target, instead of taking its place
    unsigned mode_ = 0;     // permissions of the target; 0: it was not there
};

}  // namespace vistel::platform

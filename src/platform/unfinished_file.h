// A file that is made beside the one whose place it takes once it is whole. win32 and linux
// implement all of this each; there is no headless one.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vistel::platform {

// The file goes with the object unless it was given its place, and also when the process is
// interrupted or told to end (Ctrl+C, SIGTERM, SIGHUP, a console that is closed), which then ends
// as it would have without; where the system can, whatever ends the process. At most one at a time;
// a relative name counts from the current directory, which is to stay.
class UnfinishedFile {
 public:
    UnfinishedFile() = default;
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    // Creates it for writing and reading back, always binary. Null with errno set on failure:
    // EEXIST when anything of that name is there already. The stream is the caller's and to be
    // closed before `replace` and before the object goes.
    [[nodiscard]] FILE* create(const std::string& name);
    // Gives it the name `to` as replaceFile does. After a failure it still goes with the object.
    [[nodiscard]] bool replace(const std::string& to);

 private:
    std::string name_;     // empty: there is none
    intptr_t handle_ = 0;  // by which the system knows what is to go with us; 0: none
};

}  // namespace vistel::platform

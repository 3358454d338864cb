// What the user has been told of bad frames: one line for each frame and reason, however often it
// is read again.
#pragma once

#include <set>
#include <utility>

#include "host/tstring.h"

namespace vistel {

class ToldFrames {
 public:
    // Whether it is new. It counts as told from now on.
    bool add(const Tstring& name, const Tstring& reason) {
        return told_.emplace(name, reason).second;
    }

 private:
    std::set<std::pair<Tstring, Tstring>> told_;
};

}  // namespace vistel

// How a step that may take long asks whether it is still wanted. The same on every system.
#pragma once

#include <functional>

namespace vistel::platform {

// Asked often, about every millisecond while nothing else happens; false ends the step. An empty
// one stands for true.
using GoOn = std::function<bool()>;

inline bool mayGoOn(const GoOn& goOn) { return !goOn || goOn(); }

}  // namespace vistel::platform

// What would work in the place of a name that does not.
#pragma once

#include "host/tstring.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Tells on standard error which names stand for numbered files that the user may have meant: those
// in the folder of `name` that begin as it does before its first mark or digit. A name that ends
// with a separator stands for all files of the folder. Says nothing when there are none.
void suggestFrames(const FramePlaces& places, const Tstring& name);

}  // namespace vistel

// A look at the headers of an OpenEXR file before its library sees them. The library takes the
// memory that a size field tells before it has read anything of it: a file of some hundred bytes
// could so take gigabytes.
//
//     magic, version and flags, then for each part (one, or several of a file with flag 0x1000):
//     attributes: name, 0, type, 0, size in bytes, value; an empty name ends them
//     an empty header ends those of several parts; then eight bytes for each block of each part
#pragma once

#include "codec.h"

namespace vistel {

// None when all sizes in the headers fit the file: every attribute and what it counts, every part's
// window and its table of blocks. The failure else, also for deep pictures. Leaves the file
// anywhere.
[[nodiscard]] Failure walkExrHeaders(const SourceFile& file);

}  // namespace vistel

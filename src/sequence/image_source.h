// Where a picture's stream comes from: a frame file, a converter, a command, standard input or the
// converter's test mode.
#pragma once

#include "host/tstring.h"

namespace vistel {

// Opens the source, reads it and runs the viewer on it. The empty name means standard input.
// 0, iffNotIff (-4) when nothing could be opened, else the reader's code.
[[nodiscard]] int openImageSource(const Tstring& name);

// Opens another source from the menus; range step 0 means a single image. The same results.
[[nodiscard]] int reopenSource(const Tstring& name, int start, int end, int step);

}  // namespace vistel

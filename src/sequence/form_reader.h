// One image form out of a stream.
#pragma once

#include "iff/frame_store.h"
#include "iff/image_loader.h"

namespace vistel {

// Reads the form with this number (1 is the first) as the request says; its number, call-back for
// forms and owner of that are not looked at. `found` tells whether there is anything of the form:
// it then is in `frame`, which else stays as it was. The result is the loader's: iffOk, or why the
// reading ended early.
[[nodiscard]] int readForm(const ImageLoadRequest& request, int number, FrameStore& frame,
                           bool& found);

}  // namespace vistel

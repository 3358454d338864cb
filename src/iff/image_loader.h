// Reads frame files: walks the container, decodes each image form into a FrameStore.
//
// Two ways: a full pass reads every form in turn and lists every chunk when asked; a re-read uses
// only the form whose number (counted from 1 in the file) is the wanted one and lists nothing.
#pragma once

#include "iff/frame_store.h"
#include "iff/image_load_request.h"

namespace vistel {

// Result of the parse: iffOk, or the code of the first failure. `frame` is the working store: on
// return it holds the last form read unless formRead moved it away.
[[nodiscard]] int loadImages(const ImageLoadRequest& request, FrameStore& frame);

}  // namespace vistel

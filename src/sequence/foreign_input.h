// Standard input that carries a picture of another type than the frame format: the image converter
// reads it there.
#pragma once

#include <cstdio>

#include "platform/go_on.h"

namespace vistel {

// Whether what comes next out of the stream, at its start, is no frame stream (its first byte
// tells). That byte stays the next to be read. False for a stream without a byte.
bool beginsForeign(FILE* stream);

enum class InputTaken { asItIs, intoFile, notWanted, failed };

// A pipe on standard input that carries a foreign picture becomes a file, which then is standard
// input: the converter can read that from its start, as often as it is needed. Bytes are waited for
// as long as `goOn` wants. Any other pipe stays as it is.
InputTaken takeForeignInput(FILE* pipe, const platform::GoOn& goOn);

}  // namespace vistel

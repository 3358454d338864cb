// Reading by the stb_image library, within bounds: the picture's size is checked before anything is
// decoded, the memory of the library is counted and limited, and a file that ends early fails
// instead of giving a picture whose rest is made up.
#pragma once

#include "codec.h"

namespace vistel {

// A picture of 8 or, where the file has them, 16 bits; grey, colour and mask as the file has them.
// `typeName` is for the message, with its article ("a PNG").
Failure readByStb(const SourceFile& source, const char* typeName, Picture& picture);

}  // namespace vistel

#include "platform/temporary_file.h"

namespace vistel::platform {

FILE* openTemporaryFile() { return std::tmpfile(); }

}  // namespace vistel::platform

// A file that nobody else sees.
#pragma once

#include <cstdio>

namespace vistel::platform {

// An empty file for writing and reading back, always binary, among the system's temporary ones. It
// goes when it is closed, and with the process however that ends. Null with errno set on failure.
[[nodiscard]] FILE* openTemporaryFile();

}  // namespace vistel::platform

#include "host/output_file.h"

#include <optional>

#include "platform/files.h"

namespace vistel {

FILE* OutputFile::open(const std::string& path) {
    inPlace_ = platform::fileExists(path) && !platform::isRegularFile(path);
    if (inPlace_) return platform::openFile(path, "w");
    const std::optional<std::string> target = platform::followLinks(path);
    return target ? unfinished_.create(*target) : nullptr;
}

}  // namespace vistel

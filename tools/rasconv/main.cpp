// rasconv: the converter that the viewer calls for raster files of the older kinds.
//
//     rasconv -s -B FILE stdout
//
// How those files are laid out is not known here: it says so, in the form in which a converter's
// failures are shown.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "iff/file_kind.h"
#include "platform/files.h"

namespace {

constexpr const char* usage =
    "usage: rasconv -s -B FILE stdout\n"
    "\n"
    "Is called for raster files of the older kinds (1, 2, 3 and 8), which no frame stream can be\n"
    "made of here; it tells the kind of FILE and ends with status 1.\n"
    "  -s -B    accepted, without effect\n"
    "  --help   this text\n";

std::string refusal(const std::string& file) {
    using namespace vistel;
    if (platform::fileExists(file) && !platform::isRegularFile(file))
        return "only regular files can be read, no folders, pipes or devices";
    errno = 0;
    const platform::FilePtr stream(platform::openFile(file, "r"));
    if (!stream) return std::strerror(errno);
    const int kind = probeStream(stream.get(), false);
    switch (kind) {
        case fileKindRaster1:
        case fileKindRaster2:
        case fileKindRaster3:
        case fileKindOldRaster:
            return "a raster of kind " + std::to_string(kind) + " cannot be read";
        case fileKindUnreadable:
            return "the file is too short for a raster of a known kind";
        default:
            return "not a raster of kind 1, 2, 3 or 8";
    }
}

}  // namespace

int main(int argc, char** argv) {
    vistel::platform::keepStandardStreams();
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--help") {
            std::fputs(usage, stdout);
            if (vistel::platform::finishStandardOutput()) return 0;
            std::fprintf(stderr, "rasconv: standard output: %s\n", std::strerror(errno));
            return 1;
        }
        if (word != "-s" && word != "-B") words.push_back(word);
    }
    if (words.empty() || words.size() > 2 || (words.size() == 2 && words[1] != "stdout")) {
        std::fputs(usage, stderr);
        return 1;
    }
    const std::string& file = words[0];
    std::fprintf(stderr, "rasconv: %s: %s\n", file.c_str(), refusal(file).c_str());
    return 1;
}

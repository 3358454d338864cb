// soundinfo: what the audio file library finds in sound files.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "report.h"

namespace {

using namespace vistel;

constexpr const char* usage =
    "usage: soundinfo [--json] [--raw OUT] FILE...\n"
    "\n"
    "Tells the format, channels, rate, sample width, frames, markers and further chunks of sound\n"
    "files, and whether vistel plays them.\n"
    "  --json     one JSON array with an object for each file\n"
    "  --raw OUT  writes the samples of one file to OUT as they are read: interleaved, in native\n"
    "             byte order, 1, 2 or 4 bytes each\n"
    "  --help     this text\n"
    "The status is 0 when every file could be opened, else 1.\n";

struct Options {
    bool json = false;
    std::string raw;
    std::vector<std::string> files;
};

// False when the words make no call.
bool parse(int argc, char** argv, Options& options) {
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (onlyFiles || word == "-" || word[0] != '-')
            options.files.push_back(word);
        else if (word == "--")
            onlyFiles = true;
        else if (word == "--json")
            options.json = true;
        else if (word == "--raw" && i + 1 < argc)
            options.raw = argv[++i];
        else
            return false;
    }
    return !options.files.empty() && (options.raw.empty() || options.files.size() == 1);
}

// The samples to the file's end, in reads of a size that suits both. False when they could not be
// written.
bool writeRaw(AFfilehandle& file, const std::string& name) {
    const platform::FilePtr out(platform::openFile(name, "w"));
    if (!out) return false;
    const AFtrack& track = file.track();
    const auto frameBytes = static_cast<size_t>(std::max(track.channels, 1)) *
                            static_cast<size_t>(std::max(track.containerBytes, 1));
    constexpr int64_t frames = 4096;
    std::vector<uint8_t> buffer(frameBytes * frames);
    for (int64_t got; (got = AFreadframes(&file, afDefaultTrack, buffer.data(), frames)) > 0;) {
        const size_t bytes = frameBytes * static_cast<size_t>(got);
        if (std::fwrite(buffer.data(), 1, bytes, out.get()) != bytes) return false;
    }
    return std::fflush(out.get()) == 0;
}

// Whether each file could be opened and written.
bool tellAll(const Options& options) {
    bool all = true;
    std::vector<SoundReport> reports;
    for (const std::string& name : options.files) {
        AFfilehandle* file = AFopenfile(name, "r", nullptr);
        reports.push_back(file ? reportOf(name, *file) : SoundReport{.name = name});
        all = all && file;
        if (!file) continue;
        if (!options.raw.empty() && !writeRaw(*file, options.raw)) {
            std::fprintf(stderr, "soundinfo: %s: %s\n", options.raw.c_str(), std::strerror(errno));
            all = false;
        }
        AFclosefile(file);
    }
    if (options.json)
        printJson(reports);
    else
        for (const SoundReport& report : reports)
            if (report.opened) printText(report);
    return all;
}

}  // namespace

int main(int argc, char** argv) {
    platform::keepStandardStreams();
    platform::setBinaryFileMode();
    Options options;
    bool well = argc == 2 && std::strcmp(argv[1], "--help") == 0;
    if (well) {
        std::fputs(usage, stdout);
    } else if (parse(argc, argv, options)) {
        well = tellAll(options);
    } else {
        std::fputs(usage, stderr);
        return 1;
    }
    if (platform::finishStandardOutput()) return well ? 0 : 1;
    std::fprintf(stderr, "soundinfo: standard output: %s\n", std::strerror(errno));
    return 1;
}
